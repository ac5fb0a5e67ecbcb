#include "shared/connections/npa_connection.h"

#include <memory>
#include <mutex>

#include "qvn/result_codes.h"

namespace qvn::shared {

std::uint32_t NpaConnection::exchange(Data& request, Device& device) {
  const PacketView packet = bytesOf(request);
  if (!isWellFormed(packet)) return answer(request, QRN_ERROR_INVALID_PARAMETER, QRN_ERROR_INVALID_PARAMETER);
  std::unique_lock<std::mutex> turn(turn_);
  setDevice(DeviceReference(device));
  std::uint32_t replyCode = QRN_ERROR_SUCCESS;
  const std::uint32_t result = SessionConnection::exchange(turn, packet, packet, Overlap::No, {}, replyCode);
  if (replyCode == QRN_ERROR_SUCCESS) remember(packet);
  return answer(request, result, replyCode);
}

std::uint32_t NpaConnection::send(Data& packet, Device& device) {
  const PacketView bytes = bytesOf(packet);
  if (!isWellFormed(bytes)) return QRN_ERROR_INVALID_PARAMETER;
  const std::lock_guard<std::mutex> turn(turn_);
  setDevice(DeviceReference(device));
  std::shared_ptr<NpaSession> session;
  if (const std::uint32_t rc = readySession(bytes, session); rc != QRN_ERROR_SUCCESS) return rc;
  return session->send(bytes);
}

bool NpaConnection::isUsable(const NpaSession& session, Session::Bytes packet) const {
  return !session.isAmbiguous(packet);
}

void NpaConnection::prepare(NpaSession& session) {
  for (const auto& [effect, registration] : registrations_) {
    std::uint32_t ignored = QRN_ERROR_SUCCESS;
    Session::Exchange again(registration, registration);
    if (session.send(again)) session.await(again, ignored);
  }
}

void NpaConnection::remember(PacketView request) {
  const PacketView effect = lastingEffect(request);
  if (effect.empty()) return;
  registrations_[Packet(effect.begin(), effect.end())].assign(request.begin(), request.end());
}

}  // namespace qvn::shared
