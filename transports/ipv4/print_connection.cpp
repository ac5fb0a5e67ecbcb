#include "print_connection.h"

#include "ip_settings.h"
#include "qvn/result_codes.h"

namespace qvn::ipv4 {

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
  return socket_.connect(endpoint, timeouts.connect);
}

std::uint32_t PrintConnection::doClose() {
  socket_.close();
  return QRN_ERROR_SUCCESS;
}

void PrintConnection::write(Data& data) {
  std::size_t sent = 0;
  std::uint32_t rc = kNotConnected;
  if (socket_.isOpen()) rc = socket_.send(data.getBuffer(), data.getLength(), writeTimeout_, sent);
  const auto count = static_cast<std::uint32_t>(sent);
  data.consume(count, false);
  data.setCount(count);
  data.setRc(rc);
}

}  // namespace qvn::ipv4
