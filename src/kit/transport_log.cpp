#include <algorithm>

#include "platform/process/log_writer.h"
#include "qvn/transport/log.h"

namespace qvn {
namespace {

// Null when the line is not wanted.
const platform::LogWriter* writerOf(const char* component, std::uint32_t level) noexcept {
  const platform::LogWriter* const writer = platform::logWriter();
  const bool isWanted = writer != nullptr && component != nullptr && writer->isWanted(component, level);
  return isWanted ? writer : nullptr;
}

}  // namespace

bool isTransportLogged(const char* component, std::uint32_t level) noexcept {
  return writerOf(component, level) != nullptr;
}

void transportLog(const char* component, std::uint32_t level, const std::string& text) noexcept {
  const platform::LogWriter* const writer = writerOf(component, level);
  if (writer == nullptr) return;
  try {
    std::string line = text;
    std::replace_if(
        line.begin(), line.end(), [](unsigned char c) { return c < ' ' || c == 0x7F; }, ' ');
    writer->write(component, level, line);
  } catch (...) {
    // No memory for the line.
  }
}

}  // namespace qvn
