// A printer's status cache, read through the exported function.
#pragma once

#include <cstdint>
#include <vector>

namespace qvn::cli {

// Reads the cache of an open printer; the result code, and an empty cache, when that fails.
std::uint32_t readCache(std::uint32_t client, std::uint32_t handle, std::vector<std::uint8_t>& cache);

}  // namespace qvn::cli
