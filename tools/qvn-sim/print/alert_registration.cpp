#include "print/alert_registration.h"

#include <algorithm>

namespace sim {
namespace {

constexpr std::uint8_t kExtensionAlert = 0x03;
constexpr std::uint8_t kExtendedAlert = 0x73;
constexpr std::uint8_t kPanelAlert = 0xE1;

// Bits of the extended registrations.
constexpr std::uint8_t kPlainExtended = 0x10;
constexpr std::uint8_t kLanguageExtended = 0x01;

template <std::size_t N>
bool begins(ByteView alert, const std::array<std::uint8_t, N>& body) {
  return alert.size() >= npa::kCommand + N &&
         std::equal(body.begin(), body.end(), alert.begin() + npa::kCommand);
}

std::uint8_t at(ByteView alert, std::size_t offset) { return offset < alert.size() ? alert[offset] : 0; }

}  // namespace

bool AlertRegistration::apply(npa::Command command, ByteView packet) {
  switch (command) {
    case npa::Command::StatusAlerts:
      return true;  // no packet that this device sends belongs to these
    case npa::Command::ExtensionAlerts:
      extension_ = at(packet, 6);
      return true;
    case npa::Command::PanelAlerts:
      panel_ = (at(packet, 7) & 0x01) != 0;
      return true;
    case npa::Command::ExtendedAlerts:
      extended_ = at(packet, 8);
      return true;
    case npa::Command::LanguageAlerts:
      languageByte9_ = at(packet, 9);
      languageByte10_ = at(packet, 10);
      return true;
    default:
      return false;
  }
}

bool AlertRegistration::covers(ByteView alert) const {
  if (begins(alert, npa::kPowerOnReset) || begins(alert, npa::kStatusAlert) ||
      begins(alert, npa::kCancelAcknowledge)) {
    return true;
  }
  switch (at(alert, npa::kSubCommand)) {
    case kExtensionAlert:
      return (extension_ & at(alert, 6)) != 0;
    case kPanelAlert:
      return panel_;
    case kExtendedAlert:
      if (at(alert, 7) == 1) return (extended_ & kPlainExtended) != 0;
      if (at(alert, 9) == 1) return (languageByte9_ & kLanguageExtended) != 0;
      return (languageByte10_ & at(alert, 10)) != 0;
    default:
      return (extended_ & kPlainExtended) != 0;
  }
}

bool AlertRegistration::coversJobs() const { return (extended_ & kPlainExtended) != 0; }

}  // namespace sim
