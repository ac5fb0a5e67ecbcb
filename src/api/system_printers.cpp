// What the exported printer functions forward to.
#include "api/device_calls.h"
#include "api/job_tracker.h"
#include "api/stored_attributes.h"
#include "api/system.h"
#include "device/client_registration.h"
#include "device/job_description.h"
#include "device/store/printer_store.h"
#include "device/store/printer_table.h"
#include "printer/printer_object.h"
#include "qvn/result_codes.h"
#include "qvn/transport/data.h"
#include "qvn/transport/lent_data.h"

namespace qvn {
namespace {

using Printers = DeviceCalls<PrinterTable, PrinterStore, PrinterObject>;

}  // namespace

std::uint32_t System::qvnOpenPrinter(std::uint32_t clientId, std::uint32_t handle) {
  return Printers::open(clientId, handle, {QRN_ERROR_BUSY});
}

std::uint32_t System::qvnClosePrinter(std::uint32_t clientId, std::uint32_t handle) {
  return Printers::close(clientId, handle);
}

std::uint32_t System::qvnDeletePrinter(std::uint32_t handle) { return Printers::remove(handle); }

std::uint32_t System::qvnStartJobPrinter(std::uint32_t clientId, std::uint32_t handle,
                                         const JobRequest& job) {
  const std::uint32_t rc =
      Printers::withLive(handle, [&](PrinterObject& printer) { return printer.startJob(clientId, job); });
  if (rc == QRN_ERROR_SUCCESS) JobTracker::getInstance().add(handle);
  return rc;
}

std::uint32_t System::qvnWritePrinter(std::uint32_t clientId, std::uint32_t handle,
                                      const std::uint8_t* buffer, std::uint32_t bufferSize,
                                      std::uint32_t& bytesWritten) {
  const JobTracker::CancelFlag cancelled = JobTracker::getInstance().find(handle);
  LentData request(buffer, bufferSize);
  std::uint32_t rc =
      Printers::withLive(handle, [&](PrinterObject& printer) { return printer.print(clientId, request); });
  bytesWritten = request.getCount();
  if (cancelled && *cancelled) {
    rc = Printers::withLive(handle, [&](PrinterObject& printer) { return printer.cancelPrint(clientId); });
  }
  return rc;
}

std::uint32_t System::qvnEndJobPrinter(std::uint32_t clientId, std::uint32_t handle) {
  const std::uint32_t rc =
      Printers::withLive(handle, [&](PrinterObject& printer) { return printer.endJob(clientId); });
  JobTracker::getInstance().remove(handle);
  return rc;
}

std::uint32_t System::qvnCancelJobPrinter(std::uint32_t handle) {
  if (JobTracker::getInstance().requestCancel(handle)) {
    Printers::withLive(handle, [](PrinterObject& printer) {
      printer.requestCancel();
      return QRN_ERROR_SUCCESS;
    });
  }
  return QRN_ERROR_SUCCESS;
}

std::uint32_t System::qvnExchangeNpaPrinter(std::uint32_t clientId, std::uint32_t handle, Data& request,
                                            Data& reply) {
  return Printers::withLive(
      handle, [&](PrinterObject& printer) { return printer.exchangeNpa(clientId, request, reply); });
}

std::uint32_t System::qvnGetCachePrinter(std::uint32_t clientId, std::uint32_t handle, Data& cache) {
  return Printers::withAcquired(handle,
                                [&](PrinterObject& printer) { return printer.getCache(clientId, cache); });
}

std::uint32_t System::qvnGetCurrentStatePrinter(std::uint32_t clientId, std::uint32_t handle,
                                                std::uint32_t& state) {
  return Printers::withAcquired(
      handle, [&](PrinterObject& printer) { return printer.getCurrentState(clientId, state); });
}

std::uint32_t System::qvnGetLongPrinter(std::uint32_t handle, const char* key, std::uint32_t& value) {
  return getStoredLong<PrinterStore>(handle, key, value);
}

std::uint32_t System::qvnGetStringPrinter(std::uint32_t handle, const char* key, char* buffer,
                                          std::uint32_t bufferSize, std::uint32_t& required) {
  return getStoredString<PrinterStore>(handle, key, buffer, bufferSize, required);
}

std::uint32_t System::qvnGetWideStringPrinter(std::uint32_t handle, const char* key, std::uint8_t* buffer,
                                              std::uint32_t bufferSize, std::uint32_t& required) {
  return getStoredWideString<PrinterStore>(handle, key, buffer, bufferSize, required);
}

std::uint32_t System::qvnGetByteArrayPrinter(std::uint32_t handle, const char* key, std::uint8_t* buffer,
                                             std::uint32_t bufferSize, std::uint32_t& required) {
  return getStoredByteArray<PrinterStore>(handle, key, buffer, bufferSize, required);
}

std::uint32_t System::qvnSetLongPrinter(std::uint32_t handle, const std::string& key, std::uint32_t value) {
  return Printers::withAcquired(handle, [&](PrinterObject& printer) { return printer.setLong(key, value); });
}

std::uint32_t System::qvnSetStringPrinter(std::uint32_t handle, const std::string& key,
                                          const std::string& value) {
  return Printers::withAcquired(handle,
                                [&](PrinterObject& printer) { return printer.setString(key, value); });
}

std::uint32_t System::qvnSetByteArrayPrinter(std::uint32_t handle, const std::string& key,
                                             const Data& bytes) {
  return Printers::withAcquired(handle, [&](PrinterObject& printer) {
    return printer.setByteArray(key, bytes.getBuffer(), bytes.getLength());
  });
}

std::uint32_t System::qvnRegisterForAlertsPrinter(std::uint32_t handle,
                                                  const AlertRegistration& registration) {
  return Printers::withLive(handle,
                            [&](PrinterObject& printer) { return printer.registerForAlerts(registration); });
}

std::uint32_t System::qvnUnregisterForAlertsPrinter(std::uint32_t clientId, std::uint32_t handle) {
  return Printers::withLive(handle,
                            [&](PrinterObject& printer) { return printer.unregisterForAlerts(clientId); });
}

std::uint32_t System::qvnRegisterForNotificationsPrinter(std::uint32_t handle,
                                                         const NotificationRegistration& registration) {
  return Printers::withLive(
      handle, [&](PrinterObject& printer) { return printer.registerForNotifications(registration); });
}

std::uint32_t System::qvnUnregisterForNotificationsPrinter(std::uint32_t clientId, std::uint32_t handle) {
  return Printers::withLive(
      handle, [&](PrinterObject& printer) { return printer.unregisterForNotifications(clientId); });
}

}  // namespace qvn
