#include "status_cache.h"

#include <algorithm>

namespace qvn::cli {

namespace {

// What the cache holds ahead of its entries, and the largest cache there is.
constexpr std::size_t kHeader = 7;
constexpr std::uint32_t kLargest = 1024;
// An entry: id (2 bytes, big-endian), length (1 byte), that many bytes.
constexpr std::size_t kEntryHeader = 3;

}  // namespace

std::vector<CacheEntry> cacheEntries(std::string_view cache) {
  std::vector<CacheEntry> entries;
  cache.remove_prefix(std::min(kHeader, cache.size()));
  while (cache.size() >= kEntryHeader) {
    const auto byteAt = [&](std::size_t offset) -> std::uint32_t {
      return static_cast<unsigned char>(cache[offset]);
    };
    const std::uint32_t id = byteAt(0) << 8 | byteAt(1);
    const std::size_t length = byteAt(2);
    cache.remove_prefix(kEntryHeader);
    if (length > cache.size()) {
      break;
    }
    entries.push_back({id, std::string(cache.substr(0, length))});
    cache.remove_prefix(length);
  }
  return entries;
}

std::uint32_t readCache(const Session& session, const Device& printer, std::string& cache) {
  cache.assign(kLargest, '\0');
  std::uint32_t length = 0;
  const std::uint32_t result = QvnGetCachePrinter(
      session.client(), printer.handle, reinterpret_cast<std::uint8_t*>(cache.data()), kLargest, &length);
  cache.resize(result == QRN_ERROR_SUCCESS ? length : 0);
  return result;
}

}  // namespace qvn::cli
