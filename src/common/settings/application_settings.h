// ApplicationSettings: the settings below the library's own root.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/settings/settings_store.h"

namespace qvn {

// The keys that settings lie under.
namespace setting_key {
inline constexpr char kSettings[] = "Settings\\";
inline constexpr char kUsb1Settings[] = "Usb1\\Settings\\";
inline constexpr char kLogger[] = "Logger";
inline constexpr char kLocalTransports[] = "Transports\\Local";
inline constexpr char kNetworkTransports[] = "Transports\\Network";
inline constexpr char kSupportedDevices[] = "Runtime\\SupportedDevices\\";
}  // namespace setting_key

// Needs Localize. Cheap to make: every test whether a log line is wanted makes one.
class ApplicationSettings : public SettingsStore {
 public:
  ApplicationSettings();

  void fullPath(std::string& path, std::uint32_t selection) const override;

  // What uninstallation removes: the library's own root; when no other module has one, also the shared
  // settings of the network transport and, with "DeleteStoreOnUninstall", the brand's whole folder. True when
  // that went.
  bool removeAll() override;

  // True when the library's own root exists.
  virtual bool isAvailable() const;
  // Makes the root: 0, or 1359 when that fails.
  virtual std::uint32_t create();
  virtual bool isFamilyEntry() const;
  // The names of the registered network transports.
  virtual bool getNetworkTransports(std::vector<std::string>& names) const;
  // 0 when the model is one of those that this installation supports, else 1168.
  virtual std::uint32_t isSupportedDevice(const std::string& model) const;

 private:
  bool available_;
};

// The DWORD of that name under "Settings\", its default when it cannot be read.
std::uint32_t longSetting(const std::string& name, std::uint32_t defaultValue);

}  // namespace qvn
