#include "common/settings/cached_registry_value.h"

#include "common/settings/application_settings.h"
#include "common/settings/settings_store.h"
#include "platform/base/clock.h"

namespace qvn {
namespace {

constexpr std::uint32_t kMaxAge = 10000;

}  // namespace

CachedRegistryValue::CachedRegistryValue(const LongSetting& setting)
    : setting_(setting), value_(setting.byDefault) {}

std::uint32_t CachedRegistryValue::get() {
  const std::uint32_t now = platform::tickCount();
  if (!wasRead_ || now - lastRead_ > kMaxAge) {
    std::uint32_t value = value_;
    const bool read = ApplicationSettings().getLongOrDefault(setting_.key, setting_.name, value,
                                                             setting_.byDefault, SettingsStore::kLocal);
    if (read) value_ = value;
    lastRead_ = now;
    wasRead_ = true;
  }
  return value_;
}

}  // namespace qvn
