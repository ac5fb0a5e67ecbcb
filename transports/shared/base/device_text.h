// What the attribute texts of all devices have in common that a transport finds.
#pragma once

#include <cstdint>
#include <string>

namespace qvn::shared {

// What the library knows a transport by.
struct TransportIdentity {
  const char* name;
  const char* kind;
};

struct DeviceText {
  std::string family;
  std::uint32_t handle;
  std::string portname;
  std::string address;
  const char* portType;
  std::string model;
  std::string serial;  // none when it is empty
};

// With the time when it was found, which tells a device that was found just now from one that is only stored:
// milliseconds that wrap.
std::string attributeTextOf(const TransportIdentity& transport, const DeviceText& device);

}  // namespace qvn::shared
