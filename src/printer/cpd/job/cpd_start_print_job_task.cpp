#include "printer/cpd/job/cpd_start_print_job_task.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <random>

#include "common/logging/trace_scope.h"
#include "common/settings/application_settings.h"
#include "common/settings/setting_table.h"
#include "common/settings/settings_store.h"
#include "device/printer.h"
#include "npa/job_commands.h"
#include "platform/base/clock.h"
#include "printer/cpd/job/job_cache_entry.h"
#include "qvn/result_codes.h"
#include "qvn/transport/data.h"

namespace qvn {
namespace {

std::int64_t secondsSince1970() {
  return std::chrono::duration_cast<std::chrono::seconds>(platform::clock().now().time_since_epoch()).count();
}

// What this host calls itself to the printer: drawn once and kept in the settings.
SetLastDateCommand::HostId hostId() {
  std::mt19937 generator(static_cast<std::mt19937::result_type>(secondsSince1970()));
  SetLastDateCommand::HostId id{};
  std::generate(id.begin(), id.end(), [&] { return static_cast<std::uint8_t>(generator()); });
  const Data drawn(id.data(), static_cast<std::uint32_t>(id.size()));
  Data stored = drawn;
  ApplicationSettings().getBinaryOrDefault(setting_key::kSettings, "CpdPrinterHostId", stored, drawn,
                                           SettingsStore::kLocal);
  id.fill(0);
  const std::size_t length = std::min<std::size_t>(stored.getLength(), id.size());
  std::copy_n(stored.getBuffer(), length, id.begin());
  return id;
}

}  // namespace

std::uint32_t CpdStartPrintJobTask::doExecute() {
  TraceScope trace(BasicLogger::getInstance(), log_component::server(), [&] {
    return LogText() << "CpdStartPrintJobTask::doExecute() handle=" << printer_.getHandle();
  });
  std::uint32_t rc = QRN_ERROR_SUCCESS;
  if (longSetting(setting::kAioLockEnabled) != 0) rc = lockDevice();
  if (rc == QRN_ERROR_SUCCESS) {
    if (longSetting(setting::kCpdPrinterDate) != 0) sendDate();
    rc = StartPrintJobTask::doExecute();
    if (rc == QRN_ERROR_SUCCESS) setJobCacheEntry(cpdPrinter_, true);
  }
  trace.setRc(rc);
  return rc;
}

std::uint32_t CpdStartPrintJobTask::lockDevice() {
  LockDeviceCommand command;
  Data reply;
  const std::uint32_t rc = exchange(command.packet(), reply);
  if (rc != QRN_ERROR_SUCCESS) {
    logError(log_component::server(),
             [&] { return LogText() << "Lock the AIO device failed, errorCode=" << rc; });
    return rc;
  }
  if (!LockDeviceCommand::isGranted(reply)) {
    logError(log_component::server(), [] { return LogText() << "Lock the AIO device responded busy"; });
    return QRN_ERROR_BUSY;
  }
  return QRN_ERROR_SUCCESS;
}

void CpdStartPrintJobTask::sendDate() {
  SetLastDateCommand command;
  command.setDate(SetLastDateCommand::dayCount(secondsSince1970()));
  command.setHostId(hostId());
  Data reply;
  const std::uint32_t rc = exchange(command.packet(), reply);
  if (rc == QRN_ERROR_SUCCESS) return;
  logError(log_component::server(), [&] { return LogText() << "SetLastDate command failed, rc=" << rc; });
}

}  // namespace qvn
