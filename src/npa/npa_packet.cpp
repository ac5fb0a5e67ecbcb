#include "npa/npa_packet.h"

namespace qvn {

using namespace npa;

bool NpaPacket::flag(std::uint8_t bit) const { return (reader_.u8(kFlagsOffset).value_or(0) & bit) != 0; }

bool NpaPacket::isNpa() const { return reader_.u8(0) == kStartOfPacket; }

bool NpaPacket::isLengthConsistent() const {
  const auto counted = reader_.u16(kLengthOffset);
  return counted.has_value() && length() == *counted + kUncountedBytes;
}

bool NpaPacket::isValidRequest() const {
  return isNpa() && length() >= kShortestPacket && isLengthConsistent() && !flag(kNotARequestFlag);
}

bool NpaPacket::isRejected() const { return isNpa() && length() >= kShortestPacket && flag(kRejectedFlag); }

bool NpaPacket::isReplyTo(const NpaPacket& request) const {
  const ByteReader& asked = request.reader_;
  if (!request.isNpa() || length() < kShortestPacket || !isNpa()) return false;
  if (reader_.u8(kCommandOffset) != asked.u8(kCommandOffset)) return false;
  if (length() > kSubCommandOffset && reader_.u8(kSubCommandOffset) != asked.u8(kSubCommandOffset))
    return false;
  if (asked.u8(kCommandOffset) != kVendorCommand) return true;
  if (length() > kParametersOffset && reader_.u8(kParametersOffset) != asked.u8(kParametersOffset))
    return false;
  if (length() >= 8 && asked.u8(kSubCommandOffset) == kCacheSubCommand) {
    return reader_.u8(7) == asked.u8(7) || reader_.u8(7) == kCacheReply;
  }
  return true;
}

bool NpaPacket::isAllowedFromClient() const {
  if (!isValidRequest()) return false;
  const auto command = reader_.u8(kCommandOffset);
  const auto subCommand = reader_.u8(kSubCommandOffset);
  if (command == kJobCommand && (subCommand == kStartJob || subCommand == kEndJob)) return false;
  const bool registersForExtendedAlerts = length() == 9 && command == kVendorCommand &&
                                          subCommand == kExtendedAlerts &&
                                          reader_.u8(kParametersOffset) == 0x01;
  return !registersForExtendedAlerts;
}

}  // namespace qvn
