#include "sessions/npa_session.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <chrono>

#include "base/ip_settings.h"
#include "net/tcp_socket.h"
#include "qvn/result_codes.h"
#include "qvn/transport/data.h"

namespace qvn::ipv4 {
namespace {

// How long the rest of a packet may take before its start counts as garbage.
constexpr int kPacketTimeout = 500;

// How long an exchange waits for the reader to take in what came unasked before it.
constexpr std::chrono::milliseconds kUnreadTimeout{100};

constexpr std::size_t kReadSize = 65536;
// A device that never stops sending gets its packets sorted after this many reads.
constexpr int kReadsPerTurn = 16;

// Alerts nobody has taken; the oldest go first.
constexpr std::size_t kMaxAlerts = 256;
constexpr std::size_t kMaxUnanswered = 64;

}  // namespace

std::uint32_t NpaSession::startThreads() {
  for (const auto body : {&NpaSession::readPackets, &NpaSession::deliverAlerts}) {
    const std::uint32_t rc = startThread([this, body] { (this->*body)(); });
    if (rc != QRN_ERROR_SUCCESS) return rc;
  }
  return QRN_ERROR_SUCCESS;
}

std::uint32_t NpaSession::exchange(PacketView request, Device* device, std::uint32_t& replyCode) {
  Exchange current{request, device};
  std::unique_lock<std::mutex> lock(mutex_);
  // What the device sent before it could know of this request is no answer to it.
  changed_.wait_for(lock, kUnreadTimeout, [this] { return endedBy_ != 0 || nothingUnread(); });
  if (endedBy_ != 0) return replyCode = endedBy_;
  exchange_ = &current;
  lock.unlock();

  std::size_t sent = 0;
  const std::uint32_t writeCode = socket_.send(request.data(), request.size(), timeouts_.npaWrite, sent);

  lock.lock();
  if (writeCode != QRN_ERROR_SUCCESS) {
    endLocked(writeCode);  // a packet sent in part leaves nothing to go on with
  } else {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeouts_.reply);
    changed_.wait_until(lock, deadline, [&] { return endedBy_ != 0 || current.stage != Stage::Waiting; });
  }
  changed_.wait(lock, [&] { return current.stage != Stage::Delivering; });
  exchange_ = nullptr;
  if (current.stage == Stage::Done) return replyCode = QRN_ERROR_SUCCESS;
  if (endedBy_ != 0) return replyCode = endedBy_;
  if (unanswered_.size() == kMaxUnanswered) unanswered_.erase(unanswered_.begin());
  unanswered_.emplace_back(request.begin(), request.end());
  outOfStep_ = stream_.isPartial();
  replyCode = QRN_ERROR_TIMEOUT;
  return QRN_ERROR_SUCCESS;
}

std::uint32_t NpaSession::send(PacketView packet) {
  std::size_t sent = 0;
  const std::uint32_t rc = socket_.send(packet.data(), packet.size(), timeouts_.npaWrite, sent);
  const std::lock_guard<std::mutex> lock(mutex_);
  if (rc != QRN_ERROR_SUCCESS) endLocked(rc);  // a packet sent in part leaves nothing to go on with
  return rc;
}

bool NpaSession::isAmbiguous(PacketView request) const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return outOfStep_ || std::any_of(unanswered_.begin(), unanswered_.end(),
                                   [&](const Packet& earlier) { return answers(earlier, request); });
}

void NpaSession::readPackets() {
  std::vector<std::uint8_t> buffer(kReadSize);
  bool partial = false;
  for (;;) {
    pollfd entry{socket_.fd(), POLLIN, 0};
    const int ready = poll(&entry, 1, partial ? kPacketTimeout : -1);
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      if (ready == 0) stream_.giveUpPartial();
      takeInLocked(buffer);
      partial = stream_.isPartial();
    }
    // Only now that all that came with it has been sorted: the second copy of a reply sent twice must not
    // meet the next request.
    if (!reply_.empty()) deliverReply();
    changed_.notify_all();
    if (!isAlive()) return;
  }
}

void NpaSession::takeInLocked(std::vector<std::uint8_t>& buffer) {
  for (int reads = 0; reads < kReadsPerTurn; ++reads) {
    const ssize_t got = recv(socket_.fd(), buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (got <= 0) {
      if (got == 0) endLocked(QRN_ERROR_NETNAME_DELETED);
      if (got < 0 && errno != EAGAIN && errno != EINTR) endLocked(codeFromErrno(errno));
      break;
    }
    stream_.add(PacketView(buffer.data(), static_cast<std::size_t>(got)));
    if (static_cast<std::size_t>(got) < buffer.size()) break;  // that was all
  }
  while (std::optional<Packet> packet = stream_.next()) sortPacketLocked(std::move(*packet));
}

void NpaSession::sortPacketLocked(Packet packet) {
  if (isAlert(packet)) {
    if (alerts_.size() == kMaxAlerts) alerts_.pop_front();
    alerts_.push_back(std::move(packet));
    alertsCame_.notify_all();
    return;
  }
  const auto late = std::find_if(unanswered_.begin(), unanswered_.end(),
                                 [&](const Packet& earlier) { return answers(packet, earlier); });
  if (late != unanswered_.end()) {
    unanswered_.erase(late);
  } else if (exchange_ != nullptr && exchange_->stage == Stage::Waiting &&
             answers(packet, exchange_->request)) {
    exchange_->stage = Stage::Delivering;
    reply_ = std::move(packet);
  }
}

void NpaSession::deliverReply() {
  // The exchange waits while its reply is being delivered, so it and its device stay.
  Exchange* current = nullptr;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    current = exchange_;
  }
  if (current->device != nullptr) {
    Data data(reply_.data(), static_cast<std::uint32_t>(reply_.size()));
    current->device->notify(data);
  }
  reply_.clear();
  const std::lock_guard<std::mutex> lock(mutex_);
  current->stage = Stage::Done;
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
    Data data(alert.data(), static_cast<std::uint32_t>(alert.size()));
    device.accept(data);
    lock.lock();
  }
}

bool NpaSession::nothingUnread() const {
  int unread = 0;
  return ioctl(socket_.fd(), FIONREAD, &unread) != 0 || unread == 0;
}

void NpaSession::wakeLocked() {
  Session::wakeLocked();
  alertsCame_.notify_all();
}

}  // namespace qvn::ipv4
