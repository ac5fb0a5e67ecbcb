#include "shared/sessions/session.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "platform/base/error.h"
#include "platform/threads/all_signals_blocked.h"
#include "qvn/result_codes.h"
#include "qvn/transport/lent_data.h"

namespace qvn::shared {
namespace {

using std::chrono::milliseconds;

// How long the rest of something may take before its start counts as garbage.
constexpr milliseconds kRestTimeout{500};

// How long a request waits until what came before it has been delivered.
constexpr milliseconds kUnreadTimeout{100};

}  // namespace

std::uint32_t Session::startThreads() {
  const std::uint32_t rc = watch_.open(*channel_);
  return rc != QRN_ERROR_SUCCESS ? rc : startThread([this] { serve(); });
}

bool Session::isAlive() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return endedBy_ == 0;
}

void Session::waitForEnd() {
  std::unique_lock<std::mutex> lock(mutex_);
  changed_.wait_for(lock, kUnreadTimeout, [this] { return endIsTold_; });
}

void Session::setDevice(const DeviceReference& device) {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (endedBy_ == 0) device_ = device;
}

DeviceReference Session::currentDevice() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return device_;
}

bool Session::send(Exchange& exchange) {
  std::unique_lock<std::mutex> lock(mutex_);
  exchanges_.push_back(&exchange);
  if (mixesUpReplies()) {
    claimEmptyLocked(lock, exchange);
  } else if (isFreeLocked()) {
    claimLocked(exchange);
  }
  if (endedBy_ != 0) {
    if (exchange.reads_) releaseLocked(exchange, false);
    std::erase(exchanges_, &exchange);
    return false;
  }
  if (exchange.stage_ == Exchange::Stage::Over) return true;
  beginLocked();
  exchange.stage_ = Exchange::Stage::Waiting;
  lock.unlock();

  const Bytes request = exchange.request_;
  std::size_t sent = 0;
  std::uint32_t rc = channel_->send(request, 0, sent);
  if (rc == QRN_ERROR_TIMEOUT) {
    // The device may take no more before somebody reads what it sends.
    lock.lock();
    if (exchange.reads_) releaseLocked(exchange, false);
    lock.unlock();
    std::size_t rest = 0;
    rc = channel_->send(request.subspan(sent), timeouts_.npaWrite, rest);
  }
  if (rc != QRN_ERROR_SUCCESS) {
    lock.lock();
    endLocked(rc);  // a request sent in part leaves nothing to go on with
  }
  return true;
}

std::uint32_t Session::await(Exchange& exchange, std::uint32_t& replyCode) {
  using Stage = Exchange::Stage;
  std::unique_lock<std::mutex> lock(mutex_);
  const auto deadline = Clock::now() + milliseconds(timeouts_.reply);
  while (exchange.stage_ != Stage::Over && !endIsTold_) {
    // The session's thread tells the end.
    if (exchange.reads_ && endedBy_ != 0) releaseLocked(exchange, false);
    if (exchange.stage_ == Stage::Delivering) {
      changed_.wait(lock);  // a delivery takes as long as it takes
    } else if (Clock::now() >= deadline) {
      break;
    } else if (exchange.reads_) {
      readLocked(lock, exchange, deadline);
    } else if (isFreeLocked() && endedBy_ == 0) {
      claimLocked(exchange);
    } else {
      changed_.wait_until(lock, deadline);
    }
  }
  if (exchange.reads_) releaseLocked(exchange, false);
  std::erase(exchanges_, &exchange);
  if (delivering_ == &exchange) delivering_ = nullptr;
  if (exchange.stage_ == Stage::Over) return replyCode = exchange.code_;
  if (endedBy_ != 0) return replyCode = endedBy_;
  if (mixesUpReplies()) unanswered_.add(exchange.key_, partial_);
  replyCode = QRN_ERROR_TIMEOUT;
  return QRN_ERROR_SUCCESS;
}

void Session::cancel(Exchange& exchange) {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (exchange.stage_ == Exchange::Stage::Over) return;
  exchange.stage_ = Exchange::Stage::Over;
  exchange.code_ = QRN_ERROR_CONNECTION_ABORTED;
  if (exchange.reads_) channel_->interrupt();
  changed_.notify_all();
}

void Session::close() {
  const std::lock_guard<std::mutex> lock(mutex_);
  device_ = DeviceReference();
  endLocked(QRN_ERROR_CONNECTION_ABORTED);
}

void Session::serve() {
  bool partial = false;
  bool isOver = false;
  while (!isOver) {
    watch_.wait(partial && givesUp() ? static_cast<int>(kRestTimeout.count()) : -1);
    {
      std::unique_lock<std::mutex> lock(mutex_);
      changed_.wait(lock, [this] { return !isRead_; });
      isRead_ = true;
    }
    takeTurn(false);
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      partial = partial_ = buffer().isPartial();
      isRead_ = left_ = false;
      isOver = endedBy_ != 0;
    }
    // Without the lock: who wakes up needs it at once, and would only wait again.
    changed_.notify_all();
  }
  deliverEnd();
  const std::lock_guard<std::mutex> lock(mutex_);
  endIsTold_ = true;
  wakeLocked();
}

Session::Turn Session::takeTurn(bool onlyReplies) {
  // What another reader has left comes first; a view of it ends with the next receiving.
  Turn turn{.received = false, .left = deliverAll(onlyReplies) == Progress::Left};
  if (turn.left) return turn;
  std::uint32_t endCode = receive(turn.received);
  turn.left = deliverAll(onlyReplies) == Progress::Left;
  if (turn.received && buffer().isPartial()) lastReceived_ = Clock::now();
  if (endCode == QRN_ERROR_SUCCESS) endCode = streamError();
  if (endCode != QRN_ERROR_SUCCESS) {
    const std::lock_guard<std::mutex> lock(mutex_);
    endLocked(endCode);
  }
  return turn;
}

Session::Progress Session::deliverAll(bool onlyReplies) {
  Progress progress = Progress::Made;
  while (progress == Progress::Made) progress = deliverNext(onlyReplies);
  return progress;
}

std::uint32_t Session::receive(bool& received) {
  std::size_t count = 0;
  if (const std::uint32_t rc = channel_->receive(buffer().room(), count); rc != QRN_ERROR_SUCCESS) return rc;
  if (count == 0) {
    if (givesUp() && buffer().isPartial() && Clock::now() - lastReceived_ >= kRestTimeout) giveUpPartial();
    return QRN_ERROR_SUCCESS;
  }
  buffer().add(count);
  received = true;
  return QRN_ERROR_SUCCESS;
}

void Session::claimLocked(Exchange& exchange) {
  isRead_ = exchange.reads_ = true;
  watch_.pause();
}

void Session::releaseLocked(Exchange& exchange, bool left) {
  isRead_ = exchange.reads_ = false;
  left_ = left;
  partial_ = buffer().isPartial();
  watch_.resume();
  if (left_ || partial_) watch_.call();  // it sees that itself only when more comes
  changed_.notify_all();
}

void Session::claimEmptyLocked(std::unique_lock<std::mutex>& lock, Exchange& exchange) {
  const auto deadline = Clock::now() + kUnreadTimeout;
  while (endedBy_ == 0) {
    if (exchange.reads_) {
      lock.unlock();
      const Turn turn = takeTurn(true);
      lock.lock();
      if (turn.left) releaseLocked(exchange, true);
      if (!turn.left && !turn.received) return;
    } else if (isFreeLocked()) {
      claimLocked(exchange);
    } else {
      changed_.wait_until(lock, deadline);
    }
    // A device that never stops sending is asked all the same.
    if (Clock::now() >= deadline) return;
  }
}

void Session::takeInLocked(std::unique_lock<std::mutex>& lock) {
  Exchange nothing({}, {});
  claimEmptyLocked(lock, nothing);
  if (nothing.reads_) releaseLocked(nothing, false);
}

void Session::readLocked(std::unique_lock<std::mutex>& lock, Exchange& exchange, Clock::time_point deadline) {
  lock.unlock();
  waitUntilReadable(deadline, givesUp() && buffer().isPartial());
  const Turn turn = takeTurn(true);
  lock.lock();
  if (turn.left) releaseLocked(exchange, true);
}

void Session::waitUntilReadable(Clock::time_point deadline, bool partial) {
  if (partial) deadline = std::min(deadline, lastReceived_ + kRestTimeout);
  channel_->wait(deadline);
}

void Session::lend(const DeviceReference& device, Bytes bytes, std::uint32_t code) {
  LentData data(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
  data.setRc(code);
  device.accept(data);
}

void Session::beginDeliveryLocked(Exchange& answered) {
  delivering_ = &answered;
  answered.stage_ = Exchange::Stage::Delivering;
}

void Session::endDelivery() {
  const std::lock_guard<std::mutex> lock(mutex_);
  Exchange* const answered = std::exchange(delivering_, nullptr);
  if (answered == nullptr) return;
  answeredLocked(answered->key_);
  answered->stage_ = Exchange::Stage::Over;
  changed_.notify_all();
}

Session::Bytes Session::preparedLocked() const {
  const auto prepared = std::find_if(exchanges_.begin(), exchanges_.end(), [](const Exchange* exchange) {
    return exchange->stage_ == Exchange::Stage::Preparing;
  });
  return prepared != exchanges_.end() ? (*prepared)->key_ : Bytes();
}

std::uint32_t Session::startThread(std::function<void()> body) {
  const platform::AllSignalsBlocked blocked;
  ++runningThreads_;
  try {
    threads_.emplace_back([this, run = std::move(body)] {
      run();
      --runningThreads_;
    });
    return QRN_ERROR_SUCCESS;
  } catch (const std::system_error&) {
    --runningThreads_;
    return platform::kNotEnoughMemory;
  }
}

void Session::finish() {
  close();
  for (std::thread& thread : threads_) thread.join();
}

void Session::endLocked(std::uint32_t code) {
  if (endedBy_ == 0) endedBy_ = code;
  channel_->shutDown();
  watch_.call();  // it tells the end
  wakeLocked();
}

}  // namespace qvn::shared
