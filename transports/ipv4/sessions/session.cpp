#include "sessions/session.h"

#include <system_error>
#include <utility>

#include "platform/base/error.h"
#include "platform/threads/all_signals_blocked.h"
#include "qvn/result_codes.h"

namespace qvn::ipv4 {

bool Session::isAlive() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return endedBy_ == 0;
}

void Session::setDevice(const DeviceReference& device) {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (endedBy_ == 0) device_ = device;
}

DeviceReference Session::currentDevice() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return device_;
}

void Session::close() {
  const std::lock_guard<std::mutex> lock(mutex_);
  device_ = DeviceReference();
  endLocked(QRN_ERROR_CONNECTION_ABORTED);
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

void Session::markEndedLocked(std::uint32_t code) {
  if (endedBy_ == 0) endedBy_ = code;
  socket_.shutDown();
}

void Session::endLocked(std::uint32_t code) {
  markEndedLocked(code);
  wakeLocked();
}

}  // namespace qvn::ipv4
