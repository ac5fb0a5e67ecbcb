#include "sessions/esc_session.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "base/ip_settings.h"
#include "net/tcp_socket.h"
#include "qvn/result_codes.h"
#include "qvn/transport/device.h"
#include "qvn/transport/lent_data.h"

namespace qvn::ipv4 {
namespace {

// How long a request waits for the reader to take in what came unasked before it.
constexpr std::chrono::milliseconds kUnreadTimeout{100};

constexpr std::size_t kMaxUnanswered = 64;

// A page comes for it, and then a status.
bool beginsPage(esc::Bytes bytes) { return esc::beginsWith(bytes, {{esc::kEscape, 'S', 'G'}, 3}); }

// How a reply begins to a request that expects one.
esc::Bytes replyPrefix(esc::Bytes request) {
  const esc::Command* const command = esc::find(request);
  return command != nullptr ? command->reply.view() : request.first(esc::kOtherCodeLength);
}

// Whether one thing could begin with both.
bool agree(esc::Bytes left, esc::Bytes right) {
  const std::size_t length = std::min(left.size(), right.size());
  return std::equal(left.begin(), left.begin() + static_cast<std::ptrdiff_t>(length), right.begin());
}

}  // namespace

std::uint32_t EscSession::exchange(esc::Bytes request, std::uint32_t& replyCode) {
  Exchange current{request};
  std::unique_lock<std::mutex> lock(mutex_);
  // What the device sent before it could know of this request is no answer to it.
  exchange_ = &current;
  waitForUnreadLocked(lock);
  answered_.clear();
  current.stage = Stage::Waiting;
  if (endedBy_ == 0) {
    lock.unlock();
    std::size_t sent = 0;
    const std::uint32_t writeCode = socket_.send(request.data(), request.size(), timeouts_.npaWrite, sent);
    lock.lock();
    if (writeCode != QRN_ERROR_SUCCESS) endLocked(writeCode);  // sent in part there is nothing to go on with
  }
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeouts_.reply);
  changed_.wait_until(lock, deadline, [&] { return endedBy_ != 0 || current.stage == Stage::Done; });
  changed_.wait(lock, [&] { return current.stage != Stage::Delivering; });
  exchange_ = nullptr;
  if (current.stage >= Stage::Delivered) return replyCode = QRN_ERROR_SUCCESS;
  if (endedBy_ != 0) return replyCode = endedBy_;
  if (unanswered_.size() == kMaxUnanswered) unanswered_.erase(unanswered_.begin());
  unanswered_.emplace_back(request.begin(), request.end());
  outOfStep_ = partial_;
  replyCode = QRN_ERROR_TIMEOUT;
  return QRN_ERROR_SUCCESS;
}

std::uint32_t EscSession::send(esc::Bytes bytes, std::size_t& sent) {
  sent = 0;
  {
    std::unique_lock<std::mutex> lock(mutex_);
    // The second copy of a status must not end the scan that this begins.
    if (!answered_.empty()) waitForUnreadLocked(lock);
    answered_.clear();
    if (endedBy_ != 0) return endedBy_;
    if (beginsPage(bytes)) pageUnderWay_ = true;
  }
  const std::uint32_t rc = socket_.send(bytes.data(), bytes.size(), timeouts_.npaWrite, sent);
  const std::lock_guard<std::mutex> lock(mutex_);
  if (rc != QRN_ERROR_SUCCESS) endLocked(rc);
  return rc;
}

bool EscSession::isAmbiguous(esc::Bytes bytes) const {
  // Nothing is expected of an abort, which must reach the page that comes.
  if (!esc::expectsReply(bytes) && !beginsPage(bytes)) return false;
  const esc::Bytes expected = beginsPage(bytes) ? esc::kStatus.view() : replyPrefix(bytes);
  const auto mayMeet = [&](esc::Bytes still) { return agree(still, expected); };
  const std::lock_guard<std::mutex> lock(mutex_);
  return outOfStep_ || (pageUnderWay_ && mayMeet(esc::kStatus.view())) ||
         std::any_of(unanswered_.begin(), unanswered_.end(),
                     [&](const auto& earlier) { return mayMeet(replyPrefix(earlier)); });
}

void EscSession::deliver(const esc::Bytes& command) {
  DeviceReference device;
  Exchange* answered = nullptr;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (isStaleLocked(command)) return;
    if (esc::beginsWith(command, esc::kStatus)) pageUnderWay_ = false;
    device = device_;
    if (exchange_ != nullptr && exchange_->stage == Stage::Waiting &&
        esc::isReply(exchange_->request, command)) {
      answered = exchange_;
      answered->stage = Stage::Delivering;
    }
  }
  LentData data(command.data(), static_cast<std::uint32_t>(command.size()));
  device.accept(data);
  if (answered == nullptr) return;
  // The exchange waits while its reply is being delivered.
  const std::lock_guard<std::mutex> lock(mutex_);
  answered->stage = Stage::Delivered;
  answered_.assign(answered->request.begin(), answered->request.end());
}

// Only now that all that came with the reply has been sorted: the second copy of one sent twice goes nowhere.
void EscSession::settleLocked() {
  if (exchange_ != nullptr && exchange_->stage == Stage::Delivered) exchange_->stage = Stage::Done;
}

void EscSession::waitForUnreadLocked(std::unique_lock<std::mutex>& lock) {
  changed_.wait_for(lock, kUnreadTimeout, [this] { return endedBy_ != 0 || nothingUnreadLocked(); });
}

bool EscSession::isStaleLocked(esc::Bytes command) {
  const auto late = std::find_if(unanswered_.begin(), unanswered_.end(),
                                 [&](const auto& earlier) { return esc::isReply(earlier, command); });
  if (late != unanswered_.end()) {
    unanswered_.erase(late);
    return true;
  }
  if (exchange_ != nullptr && exchange_->stage == Stage::Waiting) return false;
  const bool comesAgain = esc::isReply(answered_, command);
  const bool comesTooEarly = exchange_ != nullptr && exchange_->stage == Stage::Preparing &&
                             esc::isReply(exchange_->request, command);
  return comesAgain || comesTooEarly;
}

}  // namespace qvn::ipv4
