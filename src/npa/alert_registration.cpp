#include "npa/alert_registration.h"

#include <algorithm>

#include "common/logging/basic_logger.h"
#include "npa/npa_templates.h"
#include "qvn/transport/data.h"

namespace qvn {
namespace {

// clang-format off
//                                          mask bit   byte  packet bit
constexpr AlertBit kDeviceStatusBits[] = {{ 0x00000100,    6,    0x40 },
                                          { 0x00000200,    6,    0x80 },
                                          { 0x00000008,    7,    0x01 },
                                          { 0x00000004,    7,    0x02 },
                                          { 0x00000002,    7,    0x04 },
                                          { 0x00000001,    7,    0x08 },
                                          { 0x00000080,    8,    0x01 },
                                          { 0x00000020,    8,    0x02 },
                                          { 0x00000040,    8,    0x04 },
                                          { 0x00000010,    8,    0x08 }};
// Two mask bits share the last packet bit.
constexpr AlertBit kExtensionBits[] =    {{ 0x00000400,    6,    0x01 },
                                          { 0x00000800,    6,    0x02 },
                                          { 0x00001000,    6,    0x04 },
                                          { 0x00002000,    6,    0x08 },
                                          { 0x00004000,    6,    0x10 },
                                          { 0x00008000,    6,    0x20 },
                                          { 0x00010000,    6,    0x40 },
                                          { 0x00020000,    6,    0x80 },
                                          { 0x00040000,    6,    0x80 }};
constexpr AlertBit kPanelBits[] =        {{ 0x00080000,    7,    0x01 }};
constexpr AlertBit kExtendedBits[] =     {{ 0x00100000,    8,    0x10 }};
constexpr AlertBit kLanguageIdBits[] =   {{ 0x00200000,    9,    0x01 },
                                          { 0x02000000,    9,    0x10 },
                                          { 0x00400000,   10,    0x01 },
                                          { 0x00800000,   10,    0x02 },
                                          { 0x01000000,   10,    0x04 }};
// clang-format on

}  // namespace

AlertRegistrationCommand::AlertRegistrationCommand(const char* className,
                                                   std::span<const std::uint8_t> packetTemplate,
                                                   std::span<const AlertBit> bits)
    : NpaCommand(packetTemplate), className_(className), bits_(bits) {}

bool AlertRegistrationCommand::bidiRequired(std::uint32_t newMask, std::uint32_t oldMask) const {
  const std::uint32_t changed = newMask ^ oldMask;
  const bool required = std::any_of(bits_.begin(), bits_.end(),
                                    [&](const AlertBit& bit) { return (changed & bit.maskBit) != 0; });
  if (required) {
    logDetail(log_component::server(), [&] { return LogText() << className_ << "::bidiRequired() rc=true"; });
  }
  return required;
}

void AlertRegistrationCommand::setMask(std::uint32_t mask) {
  for (const AlertBit& bit : bits_) patch8(bit.offset, 0);
  for (const AlertBit& bit : bits_) {
    if ((mask & bit.maskBit) == 0) continue;
    patch8(bit.offset, static_cast<std::uint8_t>(packet().getBuffer()[bit.offset] | bit.packetBit));
  }
}

RegisterForDeviceStatusAlertsCommand::RegisterForDeviceStatusAlertsCommand()
    : AlertRegistrationCommand("RegisterForDeviceStatusAlertsCommand", npa_template::kDeviceStatusAlerts,
                               kDeviceStatusBits) {}

RegisterForQuorinExtensionAlertsCommand::RegisterForQuorinExtensionAlertsCommand()
    : AlertRegistrationCommand("RegisterForQuorinExtensionAlertsCommand", npa_template::kExtensionAlerts,
                               kExtensionBits) {}

RegisterForPanelAlertsCommand::RegisterForPanelAlertsCommand()
    : AlertRegistrationCommand("RegisterForPanelAlertsCommand", npa_template::kPanelAlerts, kPanelBits) {}

RegisterForQuorinExtendedAlertsCommand::RegisterForQuorinExtendedAlertsCommand()
    : AlertRegistrationCommand("RegisterForQuorinExtendedAlertsCommand", npa_template::kExtendedAlerts,
                               kExtendedBits) {}

RegisterForQuorinExtendedAlertsWithLanguageIdCommand::RegisterForQuorinExtendedAlertsWithLanguageIdCommand()
    : AlertRegistrationCommand("RegisterForQuorinExtendedAlertsWithLanguageIdCommand",
                               npa_template::kExtendedAlertsWithLanguageId, kLanguageIdBits) {}

}  // namespace qvn
