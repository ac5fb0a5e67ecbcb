// A device that notes what a transport delivers to it.
#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "qvn/transport/data.h"
#include "qvn/transport/device.h"
#include "qvn/transport/observer.h"
#include "support/simulator/test_sockets.h"

namespace qvn::test {

class LoggingDevice : public Device {
 public:
  LoggingDevice() { replies_.attachTo(*this); }
  ~LoggingDevice() override {
    replies_.detachFrom(*this);
    endReferences();
  }

  // Called on the delivering thread before each delivery is noted.
  std::function<void(const std::string&)> onDelivery;

  // What came, in order: bytes in hexadecimal, "code <code>" for what failed, "event <id> <category>",
  // "lost". Waits until that many have come, at most 10 s.
  std::vector<std::string> waitFor(std::size_t count) {
    std::unique_lock<std::mutex> lock(mutex_);
    added_.wait_for(lock, std::chrono::seconds(10), [&] { return deliveries_.size() >= count; });
    return deliveries_;
  }
  std::vector<std::string> deliveries() { return waitFor(0); }
  // Whether any of it was delivered on the calling thread.
  bool hasDeliveredHere() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return std::find(threads_.begin(), threads_.end(), std::this_thread::get_id()) != threads_.end();
  }
  std::thread::id deliveringThread() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return threads_.back();
  }

  void doAccept(Data& data) override {
    if (data.getRc() != 0 && data.getLength() == 0) return note("code " + std::to_string(data.getRc()));
    const auto bytes = bytesOf(data);
    note(toHex(Bytes(bytes.begin(), bytes.end())));
  }
  std::uint32_t doAccept(Notification& notification) override {
    note("event " + std::to_string(notification.id) + " " + std::to_string(notification.category));
    return 0;
  }
  std::uint32_t doOnConnectionLost() override {
    note("lost");
    return 0;
  }

 private:
  void note(const std::string& delivery) {
    if (onDelivery) onDelivery(delivery);
    const std::lock_guard<std::mutex> lock(mutex_);
    deliveries_.push_back(delivery);
    threads_.push_back(std::this_thread::get_id());
    added_.notify_all();
  }

  // A plug-in may bring a printer's packets by notify.
  struct Replies : Observer {
    explicit Replies(LoggingDevice& owner) : device(owner) {}
    void doUpdate(Data& data) override { device.doAccept(data); }
    using Observer::doUpdate;
    LoggingDevice& device;
  };

  Replies replies_{*this};
  std::mutex mutex_;
  std::condition_variable added_;
  std::vector<std::string> deliveries_;
  std::vector<std::thread::id> threads_;
};

}  // namespace qvn::test
