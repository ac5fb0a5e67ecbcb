#include "device/connection.h"

#include <mutex>

#include "qvn/result_codes.h"
#include "transport/call_transport.h"

namespace qvn {
namespace {

// Two devices may keep one connection.
std::mutex keepersMutex;

}  // namespace

std::uint32_t Connection::open() const {
  return transportResult("open", [&] { return connectable_->open(); });
}

std::uint32_t Connection::close() const {
  return transportResult("close", [&] { return connectable_->close(); });
}

std::uint32_t Connection::write(Data& data) const {
  const std::uint32_t thrown = transportResult("write", [&] {
    connectable_->write(data);
    return QRN_ERROR_SUCCESS;
  });
  if (thrown != QRN_ERROR_SUCCESS) {
    data.setRc(thrown);
    data.setCount(0);
  }
  return data.getRc();
}

std::uint32_t Connection::setReceiver(Device* device) const {
  return transportResult("setChild", [&] {
    return connectable_->setChild(0, device) ? QRN_ERROR_SUCCESS : QRN_ERROR_INTERNAL_ERROR;
  });
}

std::uint32_t Connection::keep(bool keeps) const {
  std::uint32_t keepers = 0;
  transportResult("setTag", [&] {
    const std::lock_guard<std::mutex> lock(keepersMutex);
    keepers = connectable_->getTag();
    if (keeps) {
      ++keepers;
    } else if (keepers != 0) {
      --keepers;
    }
    connectable_->setTag(keepers);
    return QRN_ERROR_SUCCESS;
  });
  return keepers;
}

void Connection::release() const {
  transportResult("releaseConnection", [&] {
    manager_->releaseConnection(connectable_);
    return QRN_ERROR_SUCCESS;
  });
}

}  // namespace qvn
