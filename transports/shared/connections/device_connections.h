// The connections of all devices, by device and name.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <tuple>

#include "qvn/transport/connectable.h"
#include "qvn/transport/connection_manager.h"
#include "shared/channel/place.h"
#include "shared/connections/transport_connection.h"
#include "shared/sessions/retired_sessions.h"

namespace qvn::shared {

// A printer's alerts come on the bidi connection, so "alert" is another name for it; a HID has "alert" and no
// "bidi". The bidi connection of a printer that takes print data only opens without connecting anywhere: many
// a raw printer takes one connection at a time, and that one is for the job. "cache" and "configuration" need
// no channel; a connection of an unknown name cannot be opened (1).
class DeviceConnections : public ConnectionManager {
 public:
  // Where devices are is the transport's matter; `places` outlives this.
  explicit DeviceConnections(const DevicePlaces& places) : places_(places) {}
  ~DeviceConnections() override { closeAll(); }

  Connectable* getConnection(const std::string& deviceAttributes, const std::string& connectionName) override;
  void releaseConnection(Connectable* connection) override;

 private:
  struct Key {
    std::string family;  // handles are unique per kind of device
    std::uint32_t handle = 0;
    std::string name;
    bool hasChannel = true;  // false: a bidi connection of a device that has no port for it

    friend bool operator<(const Key& left, const Key& right) {
      return std::tie(left.family, left.handle, left.name, left.hasChannel) <
             std::tie(right.family, right.handle, right.name, right.hasChannel);
    }
  };
  struct Entry {
    std::string askedName;  // with which it was last asked for, anew
    std::string askedText;
    std::unique_ptr<TransportConnection> connection;
    std::uint32_t holders = 0;
  };

  std::unique_ptr<TransportConnection> makeConnection(const Key& key);
  void dropUnusedLocked();
  // Closes everything and waits for the threads.
  void closeAll();

  const DevicePlaces& places_;
  RetiredSessions retired_;  // outlives the connections
  std::mutex mutex_;
  std::map<Key, Entry> entries_;
};

}  // namespace qvn::shared
