// One TCP connection to a device with the threads that serve it: what the sessions of all channels have in
// common.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "base/ip_settings.h"
#include "net/tcp_socket.h"
#include "qvn/transport/device.h"

namespace qvn::ipv4 {

class Session {
 public:
  Session(TcpSocket socket, const Timeouts& timeouts, const DeviceReference& device)
      : socket_(std::move(socket)), timeouts_(timeouts), device_(device) {}
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  virtual ~Session() = default;

  // Starts the threads that serve the connection: 0, or 8 when one is not to be had.
  virtual std::uint32_t startThreads() = 0;

  // False once the connection has ended.
  bool isAlive() const;

  // Whom what comes unasked is for, from now on. Makes no difference to a connection that has ended.
  void setDevice(const DeviceReference& device);

  // Ends the connection without waiting for the threads: whoever closes may hold what the receiver of a
  // delivery waits for. A delivery that runs is finished, no other one starts.
  void close();

  // All threads have ended or are about to, without touching anything but the session.
  bool isFinished() const { return runningThreads_ == 0; }

 protected:
  // 0, or 8 when there is no thread to be had.
  std::uint32_t startThread(std::function<void()> body);

  // Closes, and waits for the threads. The first thing in a derived class's destructor: they use its members.
  // Not on one of them.
  void finish();

  // Whom what comes is for now.
  DeviceReference currentDevice() const;

  // Why the connection has ended; what came first counts.
  void markEndedLocked(std::uint32_t code);
  // The same, and wakes whoever waits.
  void endLocked(std::uint32_t code);

  virtual void wakeLocked() { changed_.notify_all(); }

  TcpSocket socket_;
  const Timeouts timeouts_;

  mutable std::mutex mutex_;         // guards what follows, and what derived classes say
  std::condition_variable changed_;  // for whoever exchanges
  DeviceReference device_;           // to nothing once it has been closed
  std::uint32_t endedBy_ = 0;        // 0 while the connection lives

 private:
  std::atomic<int> runningThreads_{0};
  std::vector<std::thread> threads_;
};

}  // namespace qvn::ipv4
