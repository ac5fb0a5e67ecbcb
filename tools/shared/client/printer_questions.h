// What an open printer says when it is asked, through the exported functions.
#pragma once

#include <cstdint>
#include <vector>

namespace qvn::cli {

// Reads the status cache; the result code, and an empty cache, when that fails.
std::uint32_t readCache(std::uint32_t client, std::uint32_t handle, std::vector<std::uint8_t>& cache);

// Asks for the printer's capabilities (IEEE 1284.1), which changes nothing there: 0 when it answers, 1 when
// it takes no packets, else why not.
std::uint32_t askPrinter(std::uint32_t client, std::uint32_t handle);

}  // namespace qvn::cli
