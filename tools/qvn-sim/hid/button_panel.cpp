#include "hid/button_panel.h"

#include "base/little_endian.h"

namespace sim::panel {
namespace {

constexpr std::uint8_t kButtonReport = 0x01;
constexpr std::uint8_t kNumberedReport = 0x02;
constexpr std::uint8_t kVersion = 0x01;
constexpr std::size_t kReportLength = 8;

}  // namespace

Bytes buttonReport(std::uint8_t button) {
  Bytes report = {kButtonReport, kVersion, button};
  report.resize(kReportLength);
  return report;
}

Bytes numberedReport(std::uint32_t number) {
  Bytes report = {kNumberedReport, kVersion};
  appendLittle32(report, number);
  report.resize(kReportLength);
  return report;
}

Bytes event(std::uint32_t id, std::uint32_t category) {
  Bytes bytes;
  appendLittle32(bytes, id);
  appendLittle32(bytes, category);
  return bytes;
}

}  // namespace sim::panel
