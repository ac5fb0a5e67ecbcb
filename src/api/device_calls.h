// DeviceCalls: how the exported functions reach the objects of one kind of device.
#pragma once

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <string>

#include "api/acquired_object.h"
#include "api/discovery_manager.h"
#include "common/clients/client_call.h"
#include "common/clients/reaper.h"
#include "qvn/result_codes.h"

namespace qvn {

template <typename Table, typename Store, typename Object>
class DeviceCalls {
 public:
  // Runs an operation on the object of the handle for the time of the call, restored when it is not live. 6
  // when there is none.
  template <typename Operation>
  static std::uint32_t withAcquired(std::uint32_t handle, Operation&& operation) {
    const Acquired object(handle);
    return object ? operation(*object) : QRN_ERROR_INVALID_HANDLE;
  }

  // The same on an object that is live already: the device must be open in this process.
  template <typename Operation>
  static std::uint32_t withLive(std::uint32_t handle, Operation&& operation) {
    const auto object = Table::getInstance().find(handle);
    return object ? operation(*object) : QRN_ERROR_INVALID_HANDLE;
  }

  // Opens the device for the client. When that fails, but for the codes of a device that is there and in
  // use, the device may have changed its address: its transport looks for it, and it is tried once more.
  static std::uint32_t open(std::uint32_t clientId, std::uint32_t handle,
                            std::initializer_list<std::uint32_t> inUse) {
    std::string attributes;
    {
      Acquired object(handle);
      if (!object || !object->hasDevice()) return QRN_ERROR_INVALID_HANDLE;
      const std::uint32_t rc = openAcquired(clientId, object);
      if (rc == QRN_ERROR_SUCCESS || std::find(inUse.begin(), inUse.end(), rc) != inUse.end()) return rc;
      attributes = object->getAttributes();
    }
    DiscoveryManager::getInstance().discoverSpecific(attributes);
    Acquired object(handle);
    return object ? openAcquired(clientId, object) : QRN_ERROR_INVALID_HANDLE;
  }

  // Undoes one open. Inside a callback, which may run on that very device, the reaper does it.
  static std::uint32_t close(std::uint32_t clientId, std::uint32_t handle) {
    if (!ClientCall::isRunning()) return closeNow(clientId, handle);
    const std::uint32_t rc = withLive(handle, [&](Object& object) {
      return object.isOpenBy(clientId) ? QRN_ERROR_SUCCESS : QRN_ERROR_INVALID_FUNCTION;
    });
    if (rc == QRN_ERROR_SUCCESS) Reaper::getInstance().post([=] { closeNow(clientId, handle); });
    return rc;
  }

  // Takes the device out of its store, unless it is live.
  static std::uint32_t remove(std::uint32_t handle) {
    if (Table::getInstance().find(handle)) return QRN_ERROR_BUSY;
    return Store::getInstance().remove(handle);
  }

 private:
  using Acquired = AcquiredObject<Table, Object>;

  static std::uint32_t openAcquired(std::uint32_t clientId, Acquired& object) {
    const std::uint32_t rc = object->open(clientId);
    if (rc == QRN_ERROR_SUCCESS) object.keep();
    return rc;
  }

  static std::uint32_t closeNow(std::uint32_t clientId, std::uint32_t handle) {
    struct Close {
      std::uint32_t handle;
      bool wasOpen = false;
      ~Close() {
        // The reference is the open's: a close without an open has none to give back.
        if (wasOpen) Table::getInstance().release(handle);
      }
    } close{handle};
    return withLive(handle, [&](Object& object) { return object.close(clientId, close.wasOpen); });
  }
};

}  // namespace qvn
