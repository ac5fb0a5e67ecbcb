// LibraryLogger: the logger as the registry configures it.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "common/logging/basic_logger.h"
#include "common/settings/application_settings.h"
#include "common/settings/cached_registry_value.h"

namespace qvn {

// Its file is named after the library's local id. A line is written when its level has a bit in common with
// the mask of "All" or of its component; errors are always written; without "startLog" nothing else is.
class LibraryLogger : public BasicLogger {
 public:
  LibraryLogger();

  bool getLong(const std::string& name, std::uint32_t& value, std::uint32_t defaultValue) const override;

 protected:
  bool isWanted(const Component& component, std::uint32_t level) const override;

 private:
  // Whether there are settings to go by.
  bool isConfigured() const;

  ApplicationSettings settings_;
  mutable std::atomic<std::uint64_t> configuredAt_{0};  // the registry's changes when there last were
  mutable CachedRegistryValue startLog_;
};

}  // namespace qvn
