#include "npa_session.h"

#include <poll.h>
#include <signal.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <system_error>

#include "platform/error.h"
#include "qvn/result_codes.h"

namespace qvn::ipv4 {
namespace {

// How long the rest of a packet may take before its start counts as garbage.
constexpr int kPacketTimeout = 500;

// How long after an exchange the reader leaves the connection to the next one, which often follows at once.
constexpr std::chrono::milliseconds kQuietTime{20};

constexpr std::size_t kReadSize = 65536;
// A device that never stops sending gets its packets sorted after this many reads.
constexpr int kReadsPerTurn = 16;

// Alerts nobody has taken; the oldest go first.
constexpr std::size_t kMaxAlerts = 256;
constexpr std::size_t kMaxUnanswered = 64;

// A client's signal handlers run on the client's threads.
class AllSignalsBlocked {
 public:
  AllSignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &previous_);
  }
  ~AllSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &previous_, nullptr); }
  AllSignalsBlocked(const AllSignalsBlocked&) = delete;
  AllSignalsBlocked& operator=(const AllSignalsBlocked&) = delete;

 private:
  sigset_t previous_;
};

}  // namespace

std::uint32_t NpaSession::start(const Endpoint& endpoint, const Timeouts& timeouts,
                                std::shared_ptr<NpaSession>& session) {
  TcpSocket socket;
  if (const std::uint32_t rc = socket.connect(endpoint, timeouts.connect); rc != QRN_ERROR_SUCCESS) return rc;
  std::shared_ptr<NpaSession> made(new NpaSession(std::move(socket), timeouts));
  if (const std::uint32_t rc = made->startThreads(); rc != QRN_ERROR_SUCCESS) return rc;
  session = std::move(made);
  return QRN_ERROR_SUCCESS;
}

NpaSession::NpaSession(TcpSocket socket, const Timeouts& timeouts)
    : socket_(std::move(socket)), timeouts_(timeouts), buffer_(kReadSize) {}

std::uint32_t NpaSession::startThreads() {
  const AllSignalsBlocked blocked;
  try {
    runningThreads_ = 1;
    reader_ = std::thread([this] {
      readPackets();
      --runningThreads_;
    });
    ++runningThreads_;
    alertThread_ = std::thread([this] {
      deliverAlerts();
      --runningThreads_;
    });
    return QRN_ERROR_SUCCESS;
  } catch (const std::system_error&) {
    --runningThreads_;
    return platform::kNotEnoughMemory;
  }
}

NpaSession::~NpaSession() {
  close();
  if (reader_.joinable()) reader_.join();
  if (alertThread_.joinable()) alertThread_.join();
}

std::uint32_t NpaSession::exchange(PacketView request, Device* device, std::uint32_t& replyCode) {
  Exchange current{request, {}};
  std::unique_lock<std::mutex> lock(mutex_);
  // What the device sent before it could know of this request is no answer to it.
  takeInLocked();
  if (endedBy_ != 0) return replyCode = endedBy_;
  exchange_ = &current;
  ++exchangeCount_;
  lock.unlock();

  std::size_t sent = 0;
  const std::uint32_t writeCode = socket_.send(request.data(), request.size(), timeouts_.npaWrite, sent);

  lock.lock();
  if (writeCode == QRN_ERROR_SUCCESS) {
    awaitReply(current, lock);
  } else {
    endLocked(writeCode);  // a packet sent in part leaves nothing to go on with
  }
  exchange_ = nullptr;
  if (!current.reply.empty()) {
    lock.unlock();
    Data data(current.reply.data(), static_cast<std::uint32_t>(current.reply.size()));
    if (device != nullptr) device->notify(data);
    return replyCode = QRN_ERROR_SUCCESS;
  }
  if (endedBy_ != 0) return replyCode = endedBy_;
  if (unanswered_.size() == kMaxUnanswered) unanswered_.erase(unanswered_.begin());
  unanswered_.emplace_back(request.begin(), request.end());
  outOfStep_ = stream_.isPartial();
  replyCode = QRN_ERROR_TIMEOUT;
  return QRN_ERROR_SUCCESS;
}

void NpaSession::awaitReply(Exchange& current, std::unique_lock<std::mutex>& lock) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeouts_.reply);
  while (endedBy_ == 0 && current.reply.empty()) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now()).count();
    if (left <= 0) return;
    const bool partial = stream_.isPartial();
    const auto limit = static_cast<int>(std::min<std::int64_t>(left, partial ? kPacketTimeout : INT_MAX));
    lock.unlock();
    pollfd entry{socket_.fd(), POLLIN, 0};
    const int ready = poll(&entry, 1, limit);
    lock.lock();
    if (ready == 0 && limit == kPacketTimeout) stream_.giveUpPartial();
    takeInLocked();
  }
}

bool NpaSession::isAlive() {
  const std::lock_guard<std::mutex> lock(mutex_);
  // The end may not have been read yet.
  if (exchange_ == nullptr) takeInLocked();
  return endedBy_ == 0;
}

bool NpaSession::isAmbiguous(PacketView request) const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return outOfStep_ || std::any_of(unanswered_.begin(), unanswered_.end(),
                                   [&](const Packet& earlier) { return answers(earlier, request); });
}

void NpaSession::setDevice(Device& device) {
  const std::lock_guard<std::mutex> lock(mutex_);
  device_ = SubjectReference(device);
}

void NpaSession::close() {
  const std::lock_guard<std::mutex> lock(mutex_);
  device_ = SubjectReference();
  endLocked(kConnectionAborted);
}

void NpaSession::readPackets() {
  bool partial = false;
  for (;;) {
    pollfd entry{socket_.fd(), POLLIN, 0};
    const int ready = poll(&entry, 1, partial ? kPacketTimeout : -1);
    std::unique_lock<std::mutex> lock(mutex_);
    if (exchange_ != nullptr) {
      letExchangesRead(lock);
    } else if (ready == 0) {
      stream_.giveUpPartial();
    }
    takeInLocked();
    if (endedBy_ != 0) return;
    partial = stream_.isPartial();
  }
}

void NpaSession::letExchangesRead(std::unique_lock<std::mutex>& lock) {
  std::uint32_t seen = 0;
  do {
    seen = exchangeCount_;
    ended_.wait_for(lock, kQuietTime, [this] { return endedBy_ != 0; });
  } while (endedBy_ == 0 && (exchange_ != nullptr || exchangeCount_ != seen));
}

void NpaSession::takeInLocked() {
  for (int reads = 0; reads < kReadsPerTurn; ++reads) {
    const ssize_t got = recv(socket_.fd(), buffer_.data(), buffer_.size(), MSG_DONTWAIT);
    if (got <= 0) {
      if (got == 0) endLocked(kConnectionLost);
      if (got < 0 && errno != EAGAIN && errno != EINTR) endLocked(codeFromErrno(errno));
      break;
    }
    stream_.add(PacketView(buffer_.data(), static_cast<std::size_t>(got)));
    if (static_cast<std::size_t>(got) < buffer_.size()) break;  // that was all
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
  } else if (exchange_ != nullptr && exchange_->reply.empty() && answers(packet, exchange_->request)) {
    exchange_->reply = std::move(packet);
  }
}

void NpaSession::deliverAlerts() {
  std::unique_lock<std::mutex> lock(mutex_);
  for (;;) {
    alertsCame_.wait(lock, [this] { return endedBy_ != 0 || !alerts_.empty(); });
    // Alerts that came before the device closed the connection still count.
    if (alerts_.empty()) return;
    const Packet alert = std::move(alerts_.front());
    alerts_.pop_front();
    const SubjectReference device = device_;
    lock.unlock();
    Data data(alert.data(), static_cast<std::uint32_t>(alert.size()));
    device.notify(data);
    lock.lock();
  }
}

void NpaSession::endLocked(std::uint32_t code) {
  if (endedBy_ == 0) endedBy_ = code;
  socket_.shutDown();
  ended_.notify_all();
  alertsCame_.notify_all();
}

}  // namespace qvn::ipv4
