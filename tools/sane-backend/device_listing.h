// The stored scanners as SANE names them.
#pragma once

#include <sane/sane.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "shared/client/session.h"

namespace qvn::sane {

class DeviceListing {
 public:
  // Reads the registry; talks to no device. `localOnly` leaves out what is reached over a network.
  explicit DeviceListing(const cli::Session& session, bool localOnly = false);
  // The devices point into this object.
  DeviceListing(const DeviceListing&) = delete;
  DeviceListing& operator=(const DeviceListing&) = delete;

  // Ends with null, as sane_get_devices wants it.
  const SANE_Device** devices() { return devices_.data(); }
  // The handle of the scanner with that name; of the first one when the name is empty.
  std::optional<std::uint32_t> find(const std::string& name) const;

 private:
  struct Entry {
    std::uint32_t handle;
    std::string name;
    std::string model;
    SANE_Device device;
  };
  std::vector<std::unique_ptr<Entry>> entries_;
  std::vector<const SANE_Device*> devices_;
};

}  // namespace qvn::sane
