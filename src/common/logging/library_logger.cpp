#include "common/logging/library_logger.h"

#include "common/settings/localize.h"
#include "common/settings/setting_table.h"
#include "common/settings/settings_store.h"
#include "platform/registry/registry.h"

namespace qvn {

LibraryLogger::LibraryLogger()
    : BasicLogger(Localize::getInstance().getLocalId() + ".log"), startLog_(setting::kStartLog) {}

bool LibraryLogger::getLong(const std::string& name, std::uint32_t& value, std::uint32_t defaultValue) const {
  value = defaultValue;
  return settings_.getLongOrDefault(setting_key::kLogger, name, value, defaultValue, SettingsStore::kLocal);
}

bool LibraryLogger::isConfigured() const {
  const std::uint64_t changes = platform::registry::changes();
  if (changes != 0 && configuredAt_.load(std::memory_order_relaxed) == changes) return true;
  const bool isAvailable = ApplicationSettings().isAvailable();
  configuredAt_.store(isAvailable ? changes : 0, std::memory_order_relaxed);
  return isAvailable;
}

bool LibraryLogger::isWanted(const Component& component, std::uint32_t level) const {
  if (!isConfigured()) return false;
  if ((level & log_level::kError) != 0) return true;
  if (startLog_.get() == 0) return false;
  const Component& all = log_component::all();
  std::uint32_t globalMask = all.getMask();
  std::uint32_t ownMask = component.getMask();
  getLong(all.getName(), globalMask, globalMask);
  getLong(component.getName(), ownMask, ownMask);
  return (level & (globalMask | ownMask)) != 0;
}

}  // namespace qvn
