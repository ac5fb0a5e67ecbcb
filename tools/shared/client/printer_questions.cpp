#include "shared/client/printer_questions.h"

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

std::uint32_t askPrinter(std::uint32_t client, std::uint32_t handle) {
  constexpr std::uint8_t kCapabilities[] = {0xA5, 0x00, 0x03, 0x50, 0x01, 0x00};
  std::uint8_t reply[256];
  std::uint32_t length = 0;
  return QvnExchangeNpaPrinter(client, handle, kCapabilities, sizeof kCapabilities, reply, sizeof reply,
                               &length);
}

}  // namespace qvn::cli
