// A printer's status cache, as the exported function gives it: seven bytes and then entries.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "devices.h"

namespace qvn::cli {

struct CacheEntry {
  std::uint32_t id;
  std::string bytes;
};

// The entries in their order; one whose length goes past the end is left out, with all that follows.
std::vector<CacheEntry> cacheEntries(std::string_view cache);

// Reads the cache of an open printer; the result code when that fails.
std::uint32_t readCache(const Session& session, const Device& printer, std::string& cache);

}  // namespace qvn::cli
