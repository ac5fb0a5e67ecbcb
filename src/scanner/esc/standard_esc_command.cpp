#include "scanner/esc/standard_esc_command.h"
#include "qvn/transport/esc_command_table.h"

#include <algorithm>

namespace qvn {

StandardEscCommand::StandardEscCommand(const Data& data) : EscCommand(data) {
  if (!StandardEscCommand::isA(data)) refuse("StandardEscCommand(const Data&): command is not a EscCommand");
  std::copy_n(getBuffer() + 1, code_.size(), code_.begin());
}

bool StandardEscCommand::isResponse(const Data& data) const {
  return isA(data) && std::equal(code_.begin(), code_.end(), data.getBuffer() + 1);
}

bool StandardEscCommand::expectsResponse() const {
  return getLength() >= esc::kHeaderLength &&
         (getBuffer()[esc::kOtherReplyFlags] & esc::kOtherWantsReply) != 0;
}

bool StandardEscCommand::isA(const Data& data) const { return esc::isCommand(bytesOf(data)); }

std::string StandardEscCommand::getName() const { return "StandardEscCommand"; }

bool StandardEscCommand::isResponse(const EscCommand& other) const {
  return other.getName() == getName() && isResponse(static_cast<const Data&>(other));
}

std::uint32_t StandardEscCommand::getPayloadLength() const {
  return static_cast<std::uint32_t>(esc::payloadLength(bytesOf(*this), esc::kOtherPayloadField));
}

std::unique_ptr<EscCommand> StandardEscCommand::create(const Data& data) const {
  return isA(data) ? std::make_unique<StandardEscCommand>(data) : nullptr;
}

}  // namespace qvn
