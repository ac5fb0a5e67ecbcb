#include "shared/connections/hid_connection.h"

namespace qvn::shared {

std::uint32_t HidConnection::revive(Device& device) {
  const std::lock_guard<std::mutex> turn(turn_);
  setDevice(DeviceReference(device));
  std::shared_ptr<HidSession> session;
  return readySession({}, session);
}

}  // namespace qvn::shared
