// A setting that is read often and re-read from the registry at most every ten seconds.
#pragma once

#include <atomic>
#include <cstdint>

#include "common/settings/setting_table.h"

namespace qvn {

class CachedRegistryValue {
 public:
  explicit CachedRegistryValue(const LongSetting& setting);

  // From any thread; the value may be up to ten seconds old.
  std::uint32_t get();

 private:
  const LongSetting setting_;
  std::atomic<std::uint32_t> value_;
  std::atomic<std::uint32_t> lastRead_{0};
  std::atomic<bool> wasRead_{false};
};

}  // namespace qvn
