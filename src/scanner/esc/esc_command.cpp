#include "scanner/esc/esc_command.h"

#include "common/exception.h"
#include "qvn/result_codes.h"

namespace qvn {

bool EscCommand::isResponse(const Data& /*data*/) const { return false; }
bool EscCommand::expectsResponse() const { return false; }
bool EscCommand::isA(const Data& /*data*/) const { return false; }
std::string EscCommand::getName() const { return "EscCommand"; }

bool EscCommand::equals(const EscCommand& other) const {
  return getName() == other.getName() && equals(static_cast<const Data&>(other));
}

bool EscCommand::isResponse(const EscCommand& /*other*/) const { return false; }
std::uint32_t EscCommand::getPayloadLength() const { return 0; }
std::uint32_t EscCommand::getHeaderLength() const { return esc::kHeaderLength; }
std::unique_ptr<EscCommand> EscCommand::create(const Data& /*data*/) const { return nullptr; }
std::unique_ptr<EscCommand> EscCommand::create() const { return nullptr; }
bool EscCommand::takeFrom(Data& /*incoming*/) { return false; }

void EscCommand::refuse(const std::string& message) {
  throw Win32Exception(message, QRN_ERROR_INVALID_PARAMETER, __FILE__, __LINE__);
}

}  // namespace qvn
