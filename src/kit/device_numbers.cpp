#include "qvn/transport/device_numbers.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "kit/transport_key.h"
#include "platform/base/error.h"
#include "platform/registry/registry.h"

namespace qvn {
namespace {

namespace registry = platform::registry;

platform::ErrorCode numberAnew(const registry::Key& devices, const std::string& identity,
                               std::uint32_t firstNumber, std::uint32_t& number) {
  std::uint32_t highest = firstNumber - 1;
  const platform::ErrorCode listed = registry::forEachValue(
      devices, [&highest](std::string_view, registry::ValueType type, std::string_view bytes) {
        highest = std::max(highest, registry::dwordOf(type, bytes).value_or(0));
      });
  if (listed != platform::kSuccess) return listed;
  number = highest + 1;
  return registry::setValue(devices, identity, registry::ValueType::Dword, registry::dwordBytes(number));
}

}  // namespace

std::uint32_t deviceNumber(const char* key, const std::string& identity, std::uint32_t firstNumber,
                           std::uint32_t& number, bool* isNew) {
  return registry::transaction([&] {
    registry::Key devices;
    if (const platform::ErrorCode made = makeTransportKey(key, devices); made != platform::kSuccess)
      return made;
    registry::Value stored;
    const platform::ErrorCode read = registry::getValue(devices, identity, stored);
    if (read != platform::kSuccess && read != platform::kFileNotFound) return read;
    // A value that is no number is none.
    const std::optional<std::uint32_t> known = registry::dwordOf(stored.type, stored.data);
    if (isNew != nullptr) *isNew = !known;
    if (!known) return numberAnew(devices, identity, firstNumber, number);
    number = *known;
    return platform::kSuccess;
  });
}

}  // namespace qvn
