#include "scanner/cpd/cpd_scanner_async_data_manager.h"

#include <algorithm>
#include <vector>

#include "common/clients/client_callback.h"
#include "common/logging/basic_logger.h"
#include "qvn/result_codes.h"

namespace qvn {

std::uint32_t CpdScannerAsyncDataManager::registerForAsyncData(std::uint32_t handle,
                                                               const AsyncDataRegistration& registration) {
  logDetail(log_component::server(), [&] {
    return LogText() << "CpdScannerAsyncDataManager::registerForAsyncData(handle=" << handle << ")";
  });
  std::lock_guard<std::mutex> lock(mutex_);
  const auto [first, last] = registrations_.equal_range(handle);
  const bool known = std::any_of(
      first, last, [&](const auto& entry) { return entry.second.clientId == registration.clientId; });
  if (!known) registrations_.emplace(handle, registration);
  return QRN_ERROR_SUCCESS;
}

std::uint32_t CpdScannerAsyncDataManager::unregisterForAsyncData(std::uint32_t handle,
                                                                 std::uint32_t clientId) {
  logDetail(log_component::server(),
            [] { return LogText() << "CpdScannerAsyncDataManager::unregisterForAsyncData: "; });
  std::lock_guard<std::mutex> lock(mutex_);
  deleteClient(handle, clientId);
  return QRN_ERROR_SUCCESS;
}

void CpdScannerAsyncDataManager::deleteClient(std::uint32_t handle, std::uint32_t clientId) {
  logDetail(log_component::server(),
            [&] { return LogText() << "CpdScannerAsyncDataManager::deleteClient(handle=)" << handle; });
  const auto [first, last] = registrations_.equal_range(handle);
  const auto found =
      std::find_if(first, last, [&](const auto& entry) { return entry.second.clientId == clientId; });
  if (found != last) registrations_.erase(found);
}

void CpdScannerAsyncDataManager::waitForCallbacks(std::uint32_t handle, std::uint32_t clientId) {
  std::unique_lock<std::mutex> lock(mutex_);
  running_.wait({handle, clientId}, lock);
}

void CpdScannerAsyncDataManager::accept(std::uint32_t handle, Data& data) {
  logDetail(log_component::server(), [&] {
    return LogText() << "CpdScannerAsyncDataManager::accept(" << handle << ")"
                     << " dataSize=" << data.getLength();
  });
  if (data.getLength() == 0) return;
  std::vector<AsyncDataRegistration> receivers;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto [first, last] = registrations_.equal_range(handle);
    for (auto entry = first; entry != last; ++entry) {
      receivers.push_back(entry->second);
      running_.begin({handle, entry->second.clientId});
    }
  }
  for (const AsyncDataRegistration& receiver : receivers) {
    try {
      const ClientCallback::Scope callback;
      if (receiver.callback != nullptr) {
        receiver.callback(receiver.clientId, 0, handle, receiver.mask, data.getBuffer(), data.getLength());
      }
    } catch (...) {
      logError(log_component::server(), [&] {
        return LogText() << "CpdScannerAsyncDataManager::accept(" << handle
                         << ") Caught Exception clientId=" << receiver.clientId;
      });
    }
    std::lock_guard<std::mutex> lock(mutex_);
    running_.end({handle, receiver.clientId});
  }
}

}  // namespace qvn
