// A DWORD setting that is read often and re-read from the registry at most every ten seconds.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

namespace qvn {

class CachedRegistryValue {
 public:
  CachedRegistryValue(std::string keyPath, std::string name, std::uint32_t defaultValue,
                      std::uint32_t selection);

  // From any thread; the value may be up to ten seconds old.
  std::uint32_t get();

 private:
  std::string keyPath_;
  std::string name_;
  std::uint32_t default_;
  std::uint32_t selection_;
  std::atomic<std::uint32_t> value_;
  std::atomic<std::uint32_t> lastRead_{0};
  std::atomic<bool> wasRead_{false};
};

}  // namespace qvn
