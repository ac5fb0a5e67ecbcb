// One request's wait for its reply, which the reader of the connection or anybody who cancels it ends.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>

#include "net/tcp_socket.h"
#include "qvn/result_codes.h"

namespace qvn::ipv4 {

class PendingReply {
 public:
  // Any thread, also before the wait has begun.
  void cancel() { end(QRN_ERROR_CONNECTION_ABORTED); }

  // Ends the wait: 0 when the reply has been delivered, else why there is none. What came first counts.
  void end(std::uint32_t code) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!code_) code_ = code;
    ended_.notify_all();
  }

  // The reply has come, and its delivery takes as long as it takes: from now on the time is no matter.
  void setArrived() {
    const std::lock_guard<std::mutex> lock(mutex_);
    hasArrived_ = true;
  }

  // How the wait has ended; nothing while it has not.
  std::optional<std::uint32_t> code() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return code_;
  }

  // Waits for the end: its code, or nothing when no reply has come in time.
  std::optional<std::uint32_t> await(std::chrono::milliseconds timeout) {
    std::unique_lock<std::mutex> lock(mutex_);
    const auto hasEnded = [this] { return code_.has_value(); };
    ended_.wait_for(lock, timeout, hasEnded);
    if (hasArrived_) ended_.wait(lock, hasEnded);
    return code_;
  }

 private:
  mutable std::mutex mutex_;  // guards what follows
  std::condition_variable ended_;
  std::optional<std::uint32_t> code_;
  bool hasArrived_ = false;
};

}  // namespace qvn::ipv4
