#include "common/settings/application_settings.h"

#include "common/exception.h"
#include "common/settings/localize.h"
#include "common/settings/registry_key.h"
#include "common/text.h"
#include "platform/base/error.h"
#include "platform/registry/registry.h"
#include "qvn/result_codes.h"

namespace qvn {
namespace {

// One that is not there, nor the key above it, is as good as deleted. What cannot be deleted stays.
bool deleteTree(const std::string& path) {
  try {
    RegistryKey::deleteTree(path, RegistryKey::kLocalMachine);
  } catch (const Win32Exception& exception) {
    if (exception.getCode() == platform::kFileNotFound) return true;
    platform::setLastError(exception.getCode());
    return false;
  }
  return true;
}

// Whether some module has its root below the path; also when that cannot be told.
bool hasLocalRoots(const std::string& path) {
  try {
    return !RegistryKey(path, false, RegistryKey::kLocalMachine).getChildrenNames(1).empty();
  } catch (const Win32Exception& exception) {
    return exception.getCode() != platform::kFileNotFound;
  }
}

}  // namespace

ApplicationSettings::ApplicationSettings()
    : SettingsStore(Localize::getInstance().getRootPath(), Localize::getInstance().getLocalId()) {
  platform::registry::Key key;
  available_ =
      platform::registry::openKey(RegistryKey::kLocalMachine, Localize::getInstance().getRegistryRoot(kLocal),
                                  key) == platform::kSuccess;
}

void ApplicationSettings::fullPath(std::string& path, std::uint32_t selection) const {
  path = Localize::getInstance().getRegistryRoot(selection);
}

bool ApplicationSettings::removeAll() {
  const Localize& localize = Localize::getInstance();
  constexpr LongSetting kDeleteStore = setting::kDeleteStoreOnUninstall;
  std::uint32_t deleteStore = kDeleteStore.byDefault;
  getLong(kDeleteStore.key, kDeleteStore.name, deleteStore, kLocal);
  deleteTree(localize.getRegistryRoot(kLocal));
  available_ = false;
  if (hasLocalRoots(rootPath_ + "Local")) return false;
  deleteTree(localize.getRegistryRoot(kShared) + "Ip1\\Settings");
  return deleteStore != 0 && deleteTree(localize.getBrandRoot());
}

bool ApplicationSettings::isAvailable() const { return available_; }

std::uint32_t ApplicationSettings::create() {
  try {
    const RegistryKey root(Localize::getInstance().getRegistryRoot(kLocal), true, RegistryKey::kLocalMachine);
    available_ = true;
  } catch (const Win32Exception& exception) {
    platform::setLastError(exception.getCode());
    available_ = false;
  }
  return available_ ? QRN_ERROR_SUCCESS : QRN_ERROR_INTERNAL_ERROR;
}

bool ApplicationSettings::isFamilyEntry() const { return Localize::getInstance().isFamilyEntry(); }

bool ApplicationSettings::getNetworkTransports(std::vector<std::string>& names) const {
  return getValueNames(setting_key::kNetworkTransports, names, kLocal);
}

std::uint32_t ApplicationSettings::isSupportedDevice(const std::string& model) const {
  std::vector<std::string> names;
  getValueNames(setting_key::kSupportedDevices, names, kLocal);
  for (const std::string& name : names) {
    std::uint32_t supported = 0;
    if (equalsIgnoringCase(name, model) && getLong(setting_key::kSupportedDevices, name, supported, kLocal) &&
        supported != 0) {
      return QRN_ERROR_SUCCESS;
    }
  }
  return QRN_ERROR_NOT_FOUND;
}

std::uint32_t longSetting(const LongSetting& setting) {
  std::uint32_t value = setting.byDefault;
  ApplicationSettings().getLongOrDefault(setting.key, setting.name, value, setting.byDefault,
                                         SettingsStore::kLocal);
  return value;
}

}  // namespace qvn
