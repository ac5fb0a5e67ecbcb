// The files of a directory that are named by a number: job-1.prn, page-2.png.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>

namespace sim {

// The highest number behind the prefix; 0 when there is none.
std::uint64_t highestNumber(const std::filesystem::path& directory, std::string_view prefix);

}  // namespace sim
