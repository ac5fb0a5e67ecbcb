// ApplicationSettings: the settings below the library's own root.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/settings/setting_table.h"
#include "common/settings/settings_store.h"

namespace qvn {

// Needs Localize.
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

// As it is set; its default when it cannot be read.
std::uint32_t longSetting(const LongSetting& setting);

}  // namespace qvn
