#include "common/application_settings.h"

#include "common/exception.h"
#include "common/localize.h"
#include "common/registry_key.h"
#include "common/text.h"
#include "platform/registry.h"
#include "qvn/result_codes.h"

namespace qvn {

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

std::uint32_t longSetting(const std::string& name, std::uint32_t defaultValue) {
  std::uint32_t value = defaultValue;
  ApplicationSettings().getLongOrDefault(setting_key::kSettings, name, value, defaultValue,
                                         SettingsStore::kLocal);
  return value;
}

}  // namespace qvn
