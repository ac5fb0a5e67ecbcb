#include "platform/process/log_writer.h"

#include <atomic>

namespace qvn::platform {
namespace {

std::atomic<const LogWriter*> current{nullptr};

}  // namespace

void setLogWriter(const LogWriter* writer) { current = writer; }
const LogWriter* logWriter() { return current; }

}  // namespace qvn::platform
