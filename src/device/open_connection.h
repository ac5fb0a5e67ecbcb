// OpenConnection: a connection that is open for as long as this object lives.
#pragma once

#include <cstdint>

#include "device/connected_device.h"
#include "device/connection.h"
#include "device/kept_connection.h"

namespace qvn {

// What was taken is given back when it is closed, at the latest when the object ends: the counted open, the
// place of the device that gets what comes unasked, and what keeps the connection beyond an operation.
class OpenConnection {
 public:
  OpenConnection() = default;
  ~OpenConnection() { close(); }
  OpenConnection(OpenConnection&& other) noexcept;
  OpenConnection& operator=(OpenConnection&& other) noexcept;

  // Opens a connection that the device has got: 0, or why not, and then nothing is taken.
  std::uint32_t open(ConnectedDevice& device, const Connection& connection);
  // The same with the device in the place of the one that gets what comes unasked.
  std::uint32_t openReceiving(ConnectedDevice& device, const Connection& connection);

  // From now on it is kept beyond the operation that got the connection.
  void keep() { kept_ = KeptConnection(*device_, connection_); }

  // The transport's answer to the close. With a name the connection is asked for once more, as for any other
  // operation; what is open is closed whatever the transport gives then.
  std::uint32_t close(const char* name = nullptr);

  explicit operator bool() const { return static_cast<bool>(connection_); }
  const Connection& connection() const { return connection_; }

 private:
  ConnectedDevice* device_ = nullptr;
  Connection connection_;
  bool receives_ = false;
  KeptConnection kept_;
};

}  // namespace qvn
