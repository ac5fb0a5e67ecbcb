// CpdScannerAsyncDataManager: the clients that want what the Cpd scanners send during a scan, by scanner.
#pragma once

#include <cstdint>

#include "common/clients/callback_registry.h"
#include "common/process_service.h"
#include "device/client_registration.h"
#include "qvn/transport/data.h"

namespace qvn {

class CpdScannerAsyncDataManager : public ProcessService<CpdScannerAsyncDataManager> {
 public:
  // A client that is registered for the scanner stays as it is. Always 0.
  std::uint32_t registerForAsyncData(std::uint32_t handle, const AsyncDataRegistration& registration);
  // Always 0. What is being delivered may still reach the client.
  std::uint32_t unregisterForAsyncData(std::uint32_t handle, std::uint32_t clientId);

  // Returns when the client, unregistered before, is in no callback of the scanner any more; at once inside a
  // callback. Call it without a lock that a callback may want.
  void waitForCallbacks(std::uint32_t handle, std::uint32_t clientId);

  // Calls the clients that are registered for the scanner now, in the order of their registration, on this
  // thread and without a lock held. Nothing is kept.
  void accept(std::uint32_t handle, Data& data);

 private:
  friend class ProcessService<CpdScannerAsyncDataManager>;
  CpdScannerAsyncDataManager() = default;
  ~CpdScannerAsyncDataManager() = default;

  void deleteClient(std::uint32_t handle, std::uint32_t clientId);

  CallbackRegistry<AsyncDataRegistration> registrations_{
      {.order = CallbackRules::Order::AsAdded, .removedStillCalled = true}};
};

}  // namespace qvn
