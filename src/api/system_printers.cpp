// What the exported printer functions forward to.
#include "api/acquired_object.h"
#include "api/deferred_calls.h"
#include "api/discovery_manager.h"
#include "api/job_tracker.h"
#include "api/let_go.h"
#include "api/system.h"
#include "common/client_callback.h"
#include "qvn/transport/lent_data.h"
#include "device/printer_store.h"
#include "device/printer_table.h"
#include "printer/printer_object.h"

namespace qvn {
namespace {

// Runs an operation on the printer's object for the time of the call, restored when it is not live.
template <typename Operation>
std::uint32_t withAcquired(std::uint32_t handle, Operation&& operation) {
  const AcquiredObject<PrinterTable, PrinterObject> printer(handle);
  return printer ? operation(*printer) : QRN_ERROR_INVALID_HANDLE;
}

// The same on an object that is live already: the printer must be open in this process.
template <typename Operation>
std::uint32_t withLive(std::uint32_t handle, Operation&& operation) {
  auto printer = PrinterTable::getInstance().find(handle);
  if (!printer) return QRN_ERROR_INVALID_HANDLE;
  const std::uint32_t rc = operation(*printer);
  letGo(std::move(printer));
  return rc;
}

std::uint32_t closeNow(std::uint32_t clientId, std::uint32_t handle) {
  bool wasOpen = false;
  const std::uint32_t rc =
      withLive(handle, [&](PrinterObject& printer) { return printer.close(clientId, wasOpen); });
  // The reference is the open's: a close without an open has none to give back.
  if (wasOpen) letGo(PrinterTable::getInstance().release(handle));
  return rc;
}

}  // namespace

std::uint32_t System::qvnOpenPrinter(std::uint32_t clientId, std::uint32_t handle) {
  std::string attributes;
  {
    AcquiredObject<PrinterTable, PrinterObject> printer(handle);
    if (!printer || !printer->hasDevice()) return QRN_ERROR_INVALID_HANDLE;
    const std::uint32_t rc = printer->open(clientId);
    if (rc == QRN_ERROR_SUCCESS) printer.keep();
    if (rc == QRN_ERROR_SUCCESS || rc == QRN_ERROR_BUSY) return rc;
    attributes = printer->getAttributes();
  }
  // The device may have changed its address: let its transport look for it and try once more.
  DiscoveryManager::getInstance().discoverSpecific(attributes);
  AcquiredObject<PrinterTable, PrinterObject> printer(handle);
  if (!printer) return QRN_ERROR_INVALID_HANDLE;
  const std::uint32_t rc = printer->open(clientId);
  if (rc == QRN_ERROR_SUCCESS) printer.keep();
  return rc;
}

std::uint32_t System::qvnClosePrinter(std::uint32_t clientId, std::uint32_t handle) {
  if (!ClientCallback::isRunning()) return closeNow(clientId, handle);
  const std::uint32_t rc = withLive(handle, [&](PrinterObject& printer) {
    return printer.isOpenBy(clientId) ? QRN_ERROR_SUCCESS : QRN_ERROR_INVALID_FUNCTION;
  });
  // The callback may run on this very printer.
  if (rc == QRN_ERROR_SUCCESS) DeferredCalls::getInstance().post([=] { closeNow(clientId, handle); });
  return rc;
}

std::uint32_t System::qvnDeletePrinter(std::uint32_t handle) {
  if (PrinterTable::getInstance().find(handle)) return QRN_ERROR_BUSY;
  return PrinterStore::getInstance().remove(handle);
}

std::uint32_t System::qvnStartJobPrinter(std::uint32_t clientId, std::uint32_t handle,
                                         const JobRequest& job) {
  const std::uint32_t rc =
      withLive(handle, [&](PrinterObject& printer) { return printer.startJob(clientId, job); });
  if (rc == QRN_ERROR_SUCCESS) JobTracker::getInstance().add(handle);
  return rc;
}

std::uint32_t System::qvnWritePrinter(std::uint32_t clientId, std::uint32_t handle,
                                      const std::uint8_t* buffer, std::uint32_t bufferSize,
                                      std::uint32_t& bytesWritten) {
  const JobTracker::CancelFlag cancelled = JobTracker::getInstance().find(handle);
  LentData request(buffer, bufferSize);
  std::uint32_t rc =
      withLive(handle, [&](PrinterObject& printer) { return printer.print(clientId, request); });
  bytesWritten = request.getCount();
  if (cancelled && *cancelled) {
    rc = withLive(handle, [&](PrinterObject& printer) { return printer.cancelPrint(clientId); });
  }
  return rc;
}

std::uint32_t System::qvnEndJobPrinter(std::uint32_t clientId, std::uint32_t handle) {
  const std::uint32_t rc = withLive(handle, [&](PrinterObject& printer) { return printer.endJob(clientId); });
  JobTracker::getInstance().remove(handle);
  return rc;
}

std::uint32_t System::qvnCancelJobPrinter(std::uint32_t handle) {
  JobTracker::getInstance().requestCancel(handle);
  return QRN_ERROR_SUCCESS;
}

std::uint32_t System::qvnExchangeNpaPrinter(std::uint32_t clientId, std::uint32_t handle, Data& request,
                                            Data& reply) {
  return withLive(handle,
                  [&](PrinterObject& printer) { return printer.exchangeNpa(clientId, request, reply); });
}

std::uint32_t System::qvnGetCachePrinter(std::uint32_t clientId, std::uint32_t handle, Data& cache) {
  return withAcquired(handle, [&](PrinterObject& printer) { return printer.getCache(clientId, cache); });
}

std::uint32_t System::qvnGetCurrentStatePrinter(std::uint32_t clientId, std::uint32_t handle,
                                                std::uint32_t& state) {
  return withAcquired(handle,
                      [&](PrinterObject& printer) { return printer.getCurrentState(clientId, state); });
}

std::uint32_t System::qvnSetLongPrinter(std::uint32_t handle, const std::string& key, std::uint32_t value) {
  return withAcquired(handle, [&](PrinterObject& printer) { return printer.setLong(key, value); });
}

std::uint32_t System::qvnSetStringPrinter(std::uint32_t handle, const std::string& key,
                                          const std::string& value) {
  return withAcquired(handle, [&](PrinterObject& printer) { return printer.setString(key, value); });
}

std::uint32_t System::qvnSetByteArrayPrinter(std::uint32_t handle, const std::string& key,
                                             const Data& bytes) {
  return withAcquired(handle, [&](PrinterObject& printer) {
    return printer.setByteArray(key, bytes.getBuffer(), bytes.getLength());
  });
}

std::uint32_t System::qvnRegisterForAlertsPrinter(std::uint32_t handle,
                                                  const AlertRegistration& registration) {
  return withLive(handle, [&](PrinterObject& printer) { return printer.registerForAlerts(registration); });
}

std::uint32_t System::qvnUnregisterForAlertsPrinter(std::uint32_t clientId, std::uint32_t handle) {
  return withLive(handle, [&](PrinterObject& printer) { return printer.unregisterForAlerts(clientId); });
}

std::uint32_t System::qvnRegisterForNotificationsPrinter(std::uint32_t handle,
                                                         const NotificationRegistration& registration) {
  return withLive(handle,
                  [&](PrinterObject& printer) { return printer.registerForNotifications(registration); });
}

std::uint32_t System::qvnUnregisterForNotificationsPrinter(std::uint32_t clientId, std::uint32_t handle) {
  return withLive(handle,
                  [&](PrinterObject& printer) { return printer.unregisterForNotifications(clientId); });
}

}  // namespace qvn
