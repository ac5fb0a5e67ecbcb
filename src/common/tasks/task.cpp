#include "common/tasks/task.h"

#include "qvn/result_codes.h"

namespace qvn {

Task::~Task() = default;

std::uint32_t Task::doExecute() { return QRN_ERROR_INVALID_FUNCTION; }

}  // namespace qvn
