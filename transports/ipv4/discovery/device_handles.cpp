#include "discovery/device_handles.h"

#include <algorithm>
#include <cstring>

#include "base/ip_settings.h"
#include "platform/base/error.h"
#include "platform/registry/registry.h"
#include "qvn/result_codes.h"
#include "qvn/transport/settings.h"

namespace qvn::ipv4 {
namespace {

namespace registry = platform::registry;

bool asNumber(registry::ValueType type, std::string_view bytes, std::uint32_t& number) {
  if (type != registry::ValueType::Dword || bytes.size() != sizeof number) return false;
  std::memcpy(&number, bytes.data(), sizeof number);
  return true;
}

std::string pathOf(const char* key) { return std::string(kLibraryRegistryRoot) + key; }

platform::ErrorCode makeKey(const char* name, registry::Key& key) {
  return registry::createKey(registry::Hive::LocalMachine, pathOf(name),
                             {.everyone = true, .inheritable = true}, key);
}

platform::ErrorCode readHandle(const registry::Key& devices, const std::string& serial,
                               std::uint32_t& handle) {
  registry::Value stored;
  const platform::ErrorCode read = registry::getValue(devices, serial, stored);
  if (read != platform::kSuccess) return read;
  return asNumber(stored.type, stored.data, handle) ? platform::kSuccess : platform::kFileNotFound;
}

platform::ErrorCode makeHandle(const registry::Key& devices, const std::string& serial,
                               std::uint32_t& handle) {
  std::uint32_t highest = kFirstHandle - 1;
  const platform::ErrorCode listed = registry::forEachValue(
      devices, [&highest](std::string_view, registry::ValueType type, std::string_view bytes) {
        std::uint32_t other = 0;
        if (asNumber(type, bytes, other)) highest = std::max(highest, other);
      });
  if (listed != platform::kSuccess) return listed;
  handle = highest + 1;
  char bytes[sizeof handle];
  std::memcpy(bytes, &handle, sizeof handle);
  return registry::setValue(devices, serial, registry::ValueType::Dword, {bytes, sizeof bytes});
}

// Runs with both keys in one transaction, so that two processes that find two devices never give them one
// number.
template <typename Changes>
std::uint32_t changeNumbers(const Changes& changes) {
  registry::Key root;
  const platform::ErrorCode opened =
      registry::openKey(registry::Hive::LocalMachine, kLibraryRegistryRoot, root);
  if (opened != platform::kSuccess) return opened;
  return registry::transaction([&] {
    registry::Key devices;
    registry::Key services;
    if (const platform::ErrorCode made = makeKey(kDevicesKey, devices); made != platform::kSuccess)
      return made;
    if (const platform::ErrorCode made = makeKey(kServicesKey, services); made != platform::kSuccess)
      return made;
    return changes(devices, services);
  });
}

}  // namespace

std::uint32_t handleOf(const std::string& serial, std::uint32_t& handle) {
  return changeNumbers([&](const registry::Key& devices, const registry::Key& services) {
    platform::ErrorCode rc = readHandle(devices, serial, handle);
    if (rc == platform::kFileNotFound) rc = makeHandle(devices, serial, handle);
    if (rc != platform::kSuccess) return rc;
    const platform::ErrorCode deleted = registry::deleteValue(services, serial);
    return deleted == platform::kFileNotFound ? platform::kSuccess : deleted;
  });
}

std::uint32_t handleOfService(const std::string& serial, const std::string& serviceName,
                              std::uint32_t& handle) {
  return changeNumbers([&](const registry::Key& devices, const registry::Key& services) {
    registry::Value announced;
    const platform::ErrorCode read = registry::getValue(services, serial, announced);
    platform::ErrorCode rc = readHandle(devices, serial, handle);
    if (rc == platform::kSuccess && read == platform::kFileNotFound)
      return platform::ErrorCode{QRN_ERROR_NOT_FOUND};
    if (rc == platform::kFileNotFound) rc = makeHandle(devices, serial, handle);
    if (rc != platform::kSuccess || (read == platform::kSuccess && announced.data == serviceName)) return rc;
    return registry::setValue(services, serial, registry::ValueType::String, serviceName);
  });
}

std::string serviceNameOf(const std::string& serial) {
  registry::Key services;
  registry::Value name;
  if (registry::openKey(registry::Hive::LocalMachine, pathOf(kServicesKey), services) != platform::kSuccess ||
      registry::getValue(services, serial, name) != platform::kSuccess ||
      name.type != registry::ValueType::String) {
    return {};
  }
  return name.data;
}

}  // namespace qvn::ipv4
