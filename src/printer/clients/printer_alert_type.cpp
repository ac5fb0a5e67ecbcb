#include "printer/clients/printer_alert_type.h"

#include <algorithm>
#include <span>

#include "common/byte_reader.h"
#include "common/logging/basic_logger.h"
#include "npa/alert_layouts.h"
#include "npa/npa_packet.h"

namespace qvn {
namespace {

// One line of a table: this value of the byte looked at means this bit.
struct AlertType {
  std::uint8_t value;
  std::uint32_t maskBit;
};

constexpr std::uint32_t kInkjet = 0x100000;
constexpr std::uint32_t kPanel = 0x80000;
constexpr std::uint32_t kLanguageId = 0x200000;

// clang-format off
constexpr AlertType kPlainAlerts[] = {{0x01, kInkjet},
                                      {0x80, kInkjet}};
// By the kind of extension.
constexpr AlertType kExtensionAlerts[] = {{0x01, 0x00400},
                                          {0x02, 0x00800},
                                          {0x04, 0x01000},
                                          {0x08, 0x02000},
                                          {0x10, 0x04000},
                                          {0x20, 0x08000},
                                          {0x40, 0x10000},
                                          {0x80, 0x20000}};
// By the kind of language alert.
constexpr AlertType kExtendedAlerts[] = {{1, 0x0400000},
                                         {2, 0x0800000},
                                         {4, 0x1000000}};
// clang-format on

std::uint32_t lookUp(std::span<const AlertType> table, std::optional<std::uint8_t> value) {
  const auto found =
      std::find_if(table.begin(), table.end(), [&](const AlertType& type) { return value == type.value; });
  return found == table.end() ? 0 : found->maskBit;
}

void trace(const char* function, const Data& alert, const char* finding) {
  logDetail(log_component::server(), [&] { return (LogText() << function << "(").hex(alert) << finding; });
}

std::uint32_t decided(const char* function, const Data& alert, std::uint32_t type) {
  if (type == 0) {
    trace(function, alert, "), unknown alert type");
  } else if (type == kInkjet) {
    trace(function, alert, "), ALERTS_PRINTER_INKJET");
  } else {
    logDetail(log_component::server(),
              [&] { return (LogText() << function << "(").hex(alert) << ") alertType=" << type; });
  }
  return type;
}

std::uint32_t getExtendedAlertType(const Data& alert) {
  const ByteReader bytes(alert);
  std::uint32_t type = 0;
  if (bytes.u8(npa::kWithoutLanguageOffset) == 1) {
    type = kInkjet;
  } else if (bytes.u8(npa::kLanguageOffset) == 1) {
    type = kLanguageId;
  } else {
    type = lookUp(kExtendedAlerts, bytes.u8(npa::kLanguageKindOffset));
  }
  return decided("PrinterAlertTask::getExtendedAlertType", alert, type);
}

}  // namespace

std::uint32_t getAlertType(const Data& alert) {
  constexpr char kFunction[] = "PrinterAlertTask::getAlertType";
  const ByteReader bytes(alert);
  if (bytes.length() <= npa::kSubCommandOffset) {
    trace(kFunction, alert, "), not enough data");
    return 0;
  }
  if (bytes.u8(0) != npa::kStartOfPacket) {
    trace(kFunction, alert, "), Data does not begin with 0xA5");
    return 0;
  }
  if ((bytes.u8(npa::kCommandOffset).value_or(0) & 0xF0) != npa::kAlertCommands) {
    trace(kFunction, alert, "), Data is not an alert");
    return 0;
  }
  const auto kind = bytes.u8(npa::kSubCommandOffset);
  if (kind == npa::kExtensionAlert) {
    return decided("PrinterAlertTask::getExtensionAlertType", alert,
                   lookUp(kExtensionAlerts, bytes.u8(npa::kExtensionOffset)));
  }
  if (kind == npa::kExtendedAlerts) return getExtendedAlertType(alert);
  if (kind == npa::kPanelAlert) return decided("PrinterAlertTask::getPanelAlertType", alert, kPanel);
  return decided(kFunction, alert, lookUp(kPlainAlerts, kind));
}

}  // namespace qvn
