#include "base/numbered_files.h"

#include <algorithm>
#include <cstdlib>
#include <string>

namespace sim {

std::uint64_t highestNumber(const std::filesystem::path& directory, std::string_view prefix) {
  std::uint64_t highest = 0;
  for (const auto& entry : std::filesystem::directory_iterator(directory)) {
    const std::string name = entry.path().stem().string();
    if (!name.starts_with(prefix)) continue;
    highest = std::max<std::uint64_t>(highest, std::strtoul(name.c_str() + prefix.size(), nullptr, 10));
  }
  return highest;
}

}  // namespace sim
