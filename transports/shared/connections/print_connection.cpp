#include "shared/connections/print_connection.h"

#include <utility>

#include "qvn/result_codes.h"

namespace qvn::shared {

void PrintConnection::setPlace(std::shared_ptr<const Place> place) {
  const std::lock_guard<std::mutex> lock(placeMutex_);
  place_ = std::move(place);
}

std::uint32_t PrintConnection::doOpen() {
  std::shared_ptr<const Place> place;
  {
    const std::lock_guard<std::mutex> lock(placeMutex_);
    place = place_;
  }
  const Timeouts timeouts = place->timeouts();
  writeTimeout_ = timeouts.printWrite;
  return place->connect(timeouts, channel_);
}

std::uint32_t PrintConnection::doClose() {
  channel_.reset();
  return QRN_ERROR_SUCCESS;
}

void PrintConnection::write(Data& data) {
  std::size_t sent = 0;
  std::uint32_t rc = QRN_ERROR_CONNECTION_INVALID;
  if (channel_ != nullptr) rc = channel_->send(bytesOf(data), writeTimeout_, sent);
  const auto count = static_cast<std::uint32_t>(sent);
  data.consume(count, false);
  data.setCount(count);
  data.setRc(rc);
}

std::uint32_t PrintConnection::flush() {
  return channel_ != nullptr ? channel_->flush() : std::uint32_t{QRN_ERROR_SUCCESS};
}

}  // namespace qvn::shared
