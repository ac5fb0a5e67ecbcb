#include "hid/hid_report_manager.h"

#include <algorithm>
#include <array>
#include <string>

#include "common/logging/basic_logger.h"
#include "qvn/result_codes.h"

namespace qvn {
namespace {

// What a HID sends when nothing has happened.
constexpr std::array<std::uint8_t, 8> kNullReport = {1, 1, 0, 0, 0, 0, 0, 0};

bool isNullReport(const Data& report) {
  return std::equal(kNullReport.begin(), kNullReport.end(), report.getBuffer(),
                    report.getBuffer() + report.getLength());
}

}  // namespace

std::uint32_t HidReportManager::registerForReports(std::uint32_t handle,
                                                   const ReportRegistration& registration) {
  logDetail(log_component::serverHid(), [&] {
    return LogText() << "HidReportManager::registerForReports(handle=" << handle
                     << ", clientId=" << registration.clientId;
  });
  registrations_.add(handle, registration);
  return QRN_ERROR_SUCCESS;
}

std::uint32_t HidReportManager::unregisterForReports(std::uint32_t handle, std::uint32_t clientId) {
  logDetail(log_component::serverHid(), [&] {
    return LogText() << "HidReportManager::unregisterForReports(handle=" << handle
                     << ", clientId=" << clientId;
  });
  registrations_.remove(handle, clientId);
  registrations_.waitForCalls(handle, clientId);
  return QRN_ERROR_SUCCESS;
}

void HidReportManager::accept(std::uint32_t handle, Data& report) {
  const auto trace = [](const auto& text) { logDetail(log_component::serverHid(), text); };
  trace([&] {
    return (LogText() << "HidReportManager::accept(handle=" << handle << ", report=").hex(report) << "): ";
  });
  if (report.getLength() == 0) return trace([] { return LogText() << "report empty."; });
  if (isNullReport(report)) {
    return trace([] { return LogText() << "Null HID report (01 01 00 00 00 00 00 00)."; });
  }
  registrations_.callEach(
      handle, [](const ReportRegistration&) { return true; },
      [&](const ReportRegistration& client) {
        client.callback(client.clientId, handle, bytesOf(report).data(), report.getLength());
        trace([&] { return LogText() << "Callback clientId=" << client.clientId; });
      },
      [&](const ReportRegistration& client, const std::string& description) {
        trace([&] {
          return LogText() << "Caught Exception removing clientId=" << client.clientId
                           << ", Exception=" << description;
        });
      });
}

}  // namespace qvn
