#include "shared/client/status_cache.h"

#include "qvn/qvn.h"

namespace qvn::cli {

namespace {

constexpr std::uint32_t kLargest = 1024;

}  // namespace

std::uint32_t readCache(std::uint32_t client, std::uint32_t handle, std::vector<std::uint8_t>& cache) {
  cache.assign(kLargest, 0);
  std::uint32_t length = 0;
  const std::uint32_t result = QvnGetCachePrinter(client, handle, cache.data(), kLargest, &length);
  cache.resize(result == QRN_ERROR_SUCCESS ? length : 0);
  return result;
}

}  // namespace qvn::cli
