#include "connections/esc_connection.h"

#include "qvn/result_codes.h"

namespace qvn::ipv4 {

void EscConnection::write(Data& data) {
  const std::lock_guard<std::mutex> turn(turn_);
  const esc::Bytes bytes = bytesOf(data);
  std::size_t sent = 0;
  std::shared_ptr<EscSession> session;
  std::uint32_t rc = readySession(bytes, session);
  if (rc == QRN_ERROR_SUCCESS) rc = session->send(bytes, sent);
  const auto count = static_cast<std::uint32_t>(sent);
  data.consume(count, false);
  data.setCount(count);
  data.setRc(rc);
}

std::uint32_t EscConnection::exchange(Data& request, Device& device) {
  const std::lock_guard<std::mutex> turn(turn_);
  setDevice(DeviceReference(device));
  const esc::Bytes bytes = bytesOf(request);
  std::shared_ptr<EscSession> session;
  std::uint32_t result = readySession(bytes, session);
  std::uint32_t replyCode = result;
  if (result == QRN_ERROR_SUCCESS && esc::expectsReply(bytes)) {
    result = session->exchange(bytes, replyCode);
  } else if (result == QRN_ERROR_SUCCESS) {
    std::size_t sent = 0;
    result = replyCode = session->send(bytes, sent);
  }
  request.setCount(result == QRN_ERROR_SUCCESS ? request.getLength() : 0);
  request.setRc(replyCode);
  return result;
}

std::uint32_t EscConnection::readySession(esc::Bytes bytes, std::shared_ptr<EscSession>& session) {
  const auto isUsable = [&](const EscSession& present) { return !present.isAmbiguous(bytes); };
  return SessionConnection::readySession(
      isUsable, [](EscSession&) {}, session);
}

}  // namespace qvn::ipv4
