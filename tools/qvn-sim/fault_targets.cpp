#include "fault_targets.h"

#include "documents/documents.h"
#include "esc/esc_commands.h"
#include "print/npa_packets.h"

namespace sim {

std::optional<FaultTarget> faultTargetNamed(std::string_view command) {
  if (command == npa::nameOf(npa::Command::EnterNpaMode)) return FaultTarget::NpaSilence;
  if (npa::isNamed(command)) return FaultTarget::NpaReply;
  if (esc::isNamed(command)) return FaultTarget::EscReply;
  if (const documents::Entry* document = documents::entryNamed(command)) {
    return document->isNotification ? FaultTarget::Notification : FaultTarget::MethodReply;
  }
  return std::nullopt;
}

}  // namespace sim
