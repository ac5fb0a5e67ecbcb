#include "npa_connection.h"

#include <utility>

#include "qvn/result_codes.h"

namespace qvn::ipv4 {

NpaConnection::~NpaConnection() { retired_.retire(std::move(session_)); }

void NpaConnection::setEndpoint(const Endpoint& endpoint) {
  const std::lock_guard<std::mutex> lock(mutex_);
  endpoint_ = endpoint;
}

std::uint32_t NpaConnection::doOpen() {
  const std::lock_guard<std::mutex> lock(mutex_);
  timeouts_ = currentTimeouts();
  if (session_ == nullptr || !session_->isAlive()) {
    std::shared_ptr<NpaSession> session;
    const std::uint32_t rc = NpaSession::start(endpoint_, timeouts_, session);
    if (rc != QRN_ERROR_SUCCESS) return rc;
    retired_.retire(std::exchange(session_, std::move(session)));
  }
  opened_ = true;
  return QRN_ERROR_SUCCESS;
}

std::uint32_t NpaConnection::doClose() {
  const std::lock_guard<std::mutex> lock(mutex_);
  opened_ = false;
  if (!isWantedLocked()) endSessionLocked();
  return QRN_ERROR_SUCCESS;
}

void NpaConnection::setTag(std::uint32_t tag) {
  const std::lock_guard<std::mutex> lock(mutex_);
  Connectable::setTag(tag);
  if (!isWantedLocked()) endSessionLocked();
}

std::uint32_t NpaConnection::exchange(Data& request, Device& device) {
  const PacketView packet(request.getBuffer(), request.getLength());
  request.setCount(0);
  std::uint32_t result = QRN_ERROR_SUCCESS;
  std::uint32_t replyCode = QRN_ERROR_SUCCESS;
  if (!isWellFormed(packet)) {
    result = replyCode = QRN_ERROR_INVALID_PARAMETER;
  } else {
    const std::lock_guard<std::mutex> turn(exchangeMutex_);
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
  const PacketView bytes(packet.getBuffer(), packet.getLength());
  if (!isWellFormed(bytes)) return QRN_ERROR_INVALID_PARAMETER;
  const std::lock_guard<std::mutex> turn(exchangeMutex_);
  std::shared_ptr<NpaSession> session;
  if (const std::uint32_t rc = readySession(bytes, device, session); rc != QRN_ERROR_SUCCESS) return rc;
  return session->send(bytes);
}

std::uint32_t NpaConnection::readySession(PacketView packet, Device& device,
                                          std::shared_ptr<NpaSession>& session) {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    session = session_;
  }
  if (session == nullptr) return kNotConnected;
  if (session->isAlive() && !session->isAmbiguous(packet)) {
    session->setDevice(device);
    return QRN_ERROR_SUCCESS;
  }
  return replaceSession(session, device, session);
}

std::uint32_t NpaConnection::replaceSession(const std::shared_ptr<NpaSession>& old, Device& device,
                                            std::shared_ptr<NpaSession>& replacement) {
  Endpoint endpoint;
  Timeouts timeouts;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    endpoint = endpoint_;
    timeouts = timeouts_;
  }
  // The old one goes first: the device may take only one connection, or hold a lock for it.
  old->close();
  std::shared_ptr<NpaSession> made;
  if (const std::uint32_t rc = NpaSession::start(endpoint, timeouts, made); rc != QRN_ERROR_SUCCESS)
    return rc;
  made->setDevice(device);
  for (const auto& [effect, registration] : registrations_) {
    std::uint32_t ignored = QRN_ERROR_SUCCESS;
    made->exchange(registration, nullptr, ignored);
  }
  const std::lock_guard<std::mutex> lock(mutex_);
  if (!isWantedLocked() || session_ != old) {
    retired_.retire(std::move(made));
    return kConnectionAborted;
  }
  session_ = made;
  retired_.retire(old);
  replacement = std::move(made);
  return QRN_ERROR_SUCCESS;
}

void NpaConnection::remember(PacketView request) {
  const PacketView effect = lastingEffect(request);
  if (effect.empty()) return;
  registrations_[Packet(effect.begin(), effect.end())].assign(request.begin(), request.end());
}

void NpaConnection::endSessionLocked() { retired_.retire(std::exchange(session_, nullptr)); }

}  // namespace qvn::ipv4
