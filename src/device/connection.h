// Connection: a connection of a device's transport, as the library uses it.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "qvn/transport/connection_manager.h"
#include "qvn/transport/data.h"
#include "qvn/transport/device.h"

namespace qvn {

// Copies are the same connection, which stays its transport's. No operation throws, whatever the transport
// does: a failure is a result code.
class Connection {
 public:
  // To nothing.
  Connection() = default;
  // `module` keeps the transport's module loaded.
  Connection(std::shared_ptr<const void> module, ConnectionManager& manager, Connectable& connectable)
      : module_(std::move(module)), manager_(&manager), connectable_(&connectable) {}

  explicit operator bool() const { return connectable_ != nullptr; }
  bool isSameAs(const Connection& other) const { return connectable_ == other.connectable_; }

  // Counted: the first open and the last close reach the device. 0 or why not.
  std::uint32_t open() const;
  std::uint32_t close() const;

  // Sends the valid bytes; the data's count and result code, which is returned, tell how it went.
  std::uint32_t write(Data& data) const;

  // For whoever runs a visitor on it.
  Connectable& connectable() const { return *connectable_; }

  // Makes the device the one that gets what comes unasked, or nobody.
  std::uint32_t setReceiver(Device* device) const;

  // Adds one to those who keep the connection beyond an operation, or takes one off; how many there are then.
  std::uint32_t keep(bool keeps) const;

  // Gives it back to the manager that gave it.
  void release() const;

 private:
  std::shared_ptr<const void> module_;
  ConnectionManager* manager_ = nullptr;
  Connectable* connectable_ = nullptr;
};

}  // namespace qvn
