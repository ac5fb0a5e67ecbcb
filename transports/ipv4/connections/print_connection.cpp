#include "connections/print_connection.h"

#include "base/ip_settings.h"
#include "qvn/result_codes.h"

namespace qvn::ipv4 {
namespace {

// Print data on its way to the device. Megabytes of it in the system's buffers would be out of a cancel's
// reach, hide from the library how fast the device is, and fall out of the processor's caches.
constexpr std::uint32_t kMaxUnsent = std::uint32_t{64} << 10;

}  // namespace

void PrintConnection::setEndpoint(const Endpoint& endpoint) {
  const std::lock_guard<std::mutex> lock(endpointMutex_);
  endpoint_ = endpoint;
}

std::uint32_t PrintConnection::doOpen() {
  Endpoint endpoint;
  {
    const std::lock_guard<std::mutex> lock(endpointMutex_);
    endpoint = endpoint_;
  }
  const Timeouts timeouts = currentTimeouts();
  writeTimeout_ = timeouts.printWrite;
  const std::uint32_t rc = socket_.connect(endpoint, timeouts.connect);
  socket_.limitUnsent(kMaxUnsent);
  return rc;
}

std::uint32_t PrintConnection::doClose() {
  socket_.close();
  return QRN_ERROR_SUCCESS;
}

void PrintConnection::write(Data& data) {
  std::size_t sent = 0;
  std::uint32_t rc = QRN_ERROR_CONNECTION_INVALID;
  const auto bytes = bytesOf(data);
  if (socket_.isOpen()) rc = socket_.send(bytes.data(), bytes.size(), writeTimeout_, sent);
  const auto count = static_cast<std::uint32_t>(sent);
  data.consume(count, false);
  data.setCount(count);
  data.setRc(rc);
}

}  // namespace qvn::ipv4
