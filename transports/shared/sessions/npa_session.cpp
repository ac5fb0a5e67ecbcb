#include "shared/sessions/npa_session.h"

#include <mutex>
#include <utility>

#include "qvn/result_codes.h"

namespace qvn::shared {
namespace {

// Alerts nobody has taken; the oldest go first.
constexpr std::size_t kMaxAlerts = 256;

}  // namespace

std::uint32_t NpaSession::startThreads() {
  const std::uint32_t rc = Session::startThreads();
  return rc != QRN_ERROR_SUCCESS ? rc : startThread([this] { deliverAlerts(); });
}

std::uint32_t NpaSession::send(PacketView packet) {
  std::size_t sent = 0;
  const std::uint32_t rc = channel_->send(packet, timeouts_.npaWrite, sent);
  const std::lock_guard<std::mutex> lock(mutex_);
  if (rc != QRN_ERROR_SUCCESS) endLocked(rc);  // a packet sent in part leaves nothing to go on with
  return rc;
}

bool NpaSession::isAmbiguous(PacketView request) const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return unanswered_.mayBring([&](const Packet& earlier) { return answers(earlier, request); });
}

bool NpaSession::isForDeviceLocked(const PacketView& packet, bool isAwaited) {
  if (isAlert(packet)) {
    if (alerts_.size() == kMaxAlerts) alerts_.pop_front();
    alerts_.emplace_back(packet.begin(), packet.end());
    alertsCame_.notify_all();
    return false;
  }
  return !unanswered_.take([&](const Packet& earlier) { return answers(packet, earlier); }) && isAwaited;
}

void NpaSession::deliverAlerts() {
  std::unique_lock<std::mutex> lock(mutex_);
  for (;;) {
    alertsCame_.wait(lock, [this] { return endedBy_ != 0 || !alerts_.empty(); });
    // Alerts that came before the device closed the connection still count.
    if (alerts_.empty()) return;
    const Packet alert = std::move(alerts_.front());
    alerts_.pop_front();
    const DeviceReference device = device_;
    lock.unlock();
    deliver(alert, device);
    lock.lock();
  }
}

void NpaSession::wakeLocked() {
  Session::wakeLocked();
  alertsCame_.notify_all();
}

}  // namespace qvn::shared
