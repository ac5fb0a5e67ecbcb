#include "connections/npa_connection.h"

#include "qvn/result_codes.h"

namespace qvn::ipv4 {

std::uint32_t NpaConnection::exchange(Data& request, Device& device) {
  const PacketView packet = bytesOf(request);
  request.setCount(0);
  std::uint32_t result = QRN_ERROR_SUCCESS;
  std::uint32_t replyCode = QRN_ERROR_SUCCESS;
  if (!isWellFormed(packet)) {
    result = replyCode = QRN_ERROR_INVALID_PARAMETER;
  } else {
    const std::lock_guard<std::mutex> turn(turn_);
    std::shared_ptr<NpaSession> session;
    result = readySession(packet, device, session);
    if (result == QRN_ERROR_SUCCESS) {
      result = session->exchange(packet, &device, replyCode);
    } else {
      replyCode = result;
    }
    if (result == QRN_ERROR_SUCCESS) request.setCount(request.getLength());
    if (replyCode == QRN_ERROR_SUCCESS) remember(packet);
  }
  request.setRc(replyCode);
  return result;
}

std::uint32_t NpaConnection::send(Data& packet, Device& device) {
  const PacketView bytes = bytesOf(packet);
  if (!isWellFormed(bytes)) return QRN_ERROR_INVALID_PARAMETER;
  const std::lock_guard<std::mutex> turn(turn_);
  std::shared_ptr<NpaSession> session;
  if (const std::uint32_t rc = readySession(bytes, device, session); rc != QRN_ERROR_SUCCESS) return rc;
  return session->send(bytes);
}

std::uint32_t NpaConnection::readySession(PacketView packet, Device& device,
                                          std::shared_ptr<NpaSession>& session) {
  setDevice(DeviceReference(device));
  const auto isUsable = [&](const NpaSession& present) { return !present.isAmbiguous(packet); };
  const auto registerAgain = [&](NpaSession& made) {
    for (const auto& [effect, registration] : registrations_) {
      std::uint32_t ignored = QRN_ERROR_SUCCESS;
      made.exchange(registration, nullptr, ignored);
    }
  };
  return SessionConnection::readySession(isUsable, registerAgain, session);
}

void NpaConnection::remember(PacketView request) {
  const PacketView effect = lastingEffect(request);
  if (effect.empty()) return;
  registrations_[Packet(effect.begin(), effect.end())].assign(request.begin(), request.end());
}

}  // namespace qvn::ipv4
