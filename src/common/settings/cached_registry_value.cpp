#include "common/settings/cached_registry_value.h"

#include <utility>

#include "common/settings/application_settings.h"
#include "platform/base/clock.h"

namespace qvn {
namespace {

constexpr std::uint32_t kMaxAge = 10000;

}  // namespace

CachedRegistryValue::CachedRegistryValue(std::string keyPath, std::string name, std::uint32_t defaultValue,
                                         std::uint32_t selection)
    : keyPath_(std::move(keyPath)),
      name_(std::move(name)),
      default_(defaultValue),
      selection_(selection),
      value_(defaultValue) {}

std::uint32_t CachedRegistryValue::get() {
  const std::uint32_t now = platform::tickCount();
  if (!wasRead_ || now - lastRead_ > kMaxAge) {
    std::uint32_t value = value_;
    if (ApplicationSettings().getLongOrDefault(keyPath_, name_, value, default_, selection_)) value_ = value;
    lastRead_ = now;
    wasRead_ = true;
  }
  return value_;
}

}  // namespace qvn
