#include "scanner/cpd/cpd_scanner_async_data_manager.h"

#include <string>

#include "common/logging/basic_logger.h"
#include "qvn/result_codes.h"

namespace qvn {

std::uint32_t CpdScannerAsyncDataManager::registerForAsyncData(std::uint32_t handle,
                                                               const AsyncDataRegistration& registration) {
  logDetail(log_component::server(), [&] {
    return LogText() << "CpdScannerAsyncDataManager::registerForAsyncData(handle=" << handle << ")";
  });
  registrations_.add(handle, registration);
  return QRN_ERROR_SUCCESS;
}

std::uint32_t CpdScannerAsyncDataManager::unregisterForAsyncData(std::uint32_t handle,
                                                                 std::uint32_t clientId) {
  logDetail(log_component::server(),
            [] { return LogText() << "CpdScannerAsyncDataManager::unregisterForAsyncData: "; });
  deleteClient(handle, clientId);
  return QRN_ERROR_SUCCESS;
}

void CpdScannerAsyncDataManager::deleteClient(std::uint32_t handle, std::uint32_t clientId) {
  logDetail(log_component::server(),
            [&] { return LogText() << "CpdScannerAsyncDataManager::deleteClient(handle=)" << handle; });
  registrations_.remove(handle, clientId);
}

void CpdScannerAsyncDataManager::waitForCallbacks(std::uint32_t handle, std::uint32_t clientId) {
  registrations_.waitForCalls(handle, clientId);
}

void CpdScannerAsyncDataManager::accept(std::uint32_t handle, Data& data) {
  logDetail(log_component::server(), [&] {
    return LogText() << "CpdScannerAsyncDataManager::accept(" << handle << ")"
                     << " dataSize=" << data.getLength();
  });
  if (data.getLength() == 0) return;
  registrations_.callEach(
      handle, [](const AsyncDataRegistration&) { return true; },
      [&](const AsyncDataRegistration& client) {
        if (client.callback == nullptr) return;
        client.callback(client.clientId, 0, handle, client.mask, bytesOf(data).data(), data.getLength());
      },
      [&](const AsyncDataRegistration& client, const std::string& thrown) {
        logError(log_component::server(), [&] {
          return LogText() << "CpdScannerAsyncDataManager::accept(" << handle
                           << ") Caught Exception clientId=" << client.clientId << ", Exception=" << thrown;
        });
      });
}

}  // namespace qvn
