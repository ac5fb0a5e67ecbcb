#include "shared/connections/esc_connection.h"

#include <memory>
#include <mutex>

#include "qvn/result_codes.h"

namespace qvn::shared {

void EscConnection::write(Data& data) {
  const std::lock_guard<std::mutex> turn(turn_);
  std::size_t sent = 0;
  const std::uint32_t rc = send(bytesOf(data), sent);
  const auto count = static_cast<std::uint32_t>(sent);
  data.consume(count, false);
  data.setCount(count);
  data.setRc(rc);
}

std::uint32_t EscConnection::exchange(Data& request, Device& device) {
  std::unique_lock<std::mutex> turn(turn_);
  setDevice(DeviceReference(device));
  const esc::Bytes bytes = bytesOf(request);
  std::uint32_t replyCode = QRN_ERROR_SUCCESS;
  std::uint32_t result = QRN_ERROR_SUCCESS;
  if (esc::expectsReply(bytes)) {
    result = SessionConnection::exchange(turn, bytes, bytes, Overlap::No, {}, replyCode);
  } else {
    std::size_t sent = 0;
    result = replyCode = send(bytes, sent);
  }
  return answer(request, result, replyCode);
}

std::uint32_t EscConnection::send(esc::Bytes bytes, std::size_t& sent) {
  std::shared_ptr<EscSession> session;
  const std::uint32_t rc = readySession(bytes, session);
  return rc == QRN_ERROR_SUCCESS ? session->send(bytes, sent) : rc;
}

bool EscConnection::isUsable(const EscSession& session, Session::Bytes bytes) const {
  return !session.isAmbiguous(bytes);
}

}  // namespace qvn::shared
