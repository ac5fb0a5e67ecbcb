#include "device_numbers.h"

#include <algorithm>
#include <cstring>

#include "ip_settings.h"
#include "platform/registry.h"

namespace qvn::ipv4 {
namespace {

namespace registry = platform::registry;

bool asNumber(registry::ValueType type, std::string_view bytes, std::uint32_t& number) {
  if (type != registry::ValueType::Dword || bytes.size() != sizeof number) return false;
  std::memcpy(&number, bytes.data(), sizeof number);
  return true;
}

platform::ErrorCode readOrMakeHandle(const registry::Key& devices, const std::string& serial,
                                     std::uint32_t& handle) {
  registry::Value stored;
  const platform::ErrorCode read = registry::getValue(devices, serial, stored);
  if (read == platform::kSuccess && asNumber(stored.type, stored.data, handle)) return read;
  if (read != platform::kSuccess && read != platform::kFileNotFound) return read;
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

}  // namespace

std::uint32_t handleOf(const std::string& serial, std::uint32_t& handle) {
  registry::Key root;
  const platform::ErrorCode opened =
      registry::openKey(registry::Hive::LocalMachine, kLibraryRegistryRoot, root);
  if (opened != platform::kSuccess) return opened;
  // In one transaction, so that two processes that find two devices never give them one number.
  return registry::transaction([&] {
    registry::Key devices;
    const platform::ErrorCode made =
        registry::createKey(registry::Hive::LocalMachine, std::string(kLibraryRegistryRoot) + kDevicesKey,
                            {.everyone = true, .inheritable = true}, devices);
    return made != platform::kSuccess ? made : readOrMakeHandle(devices, serial, handle);
  });
}

}  // namespace qvn::ipv4
