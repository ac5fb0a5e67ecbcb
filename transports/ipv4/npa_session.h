// One TCP connection to a device's bidi port. Whoever exchanges a packet reads the reply by itself: handing
// it from one thread to another would cost as much as the exchange. Two threads serve the connection besides:
// the reader takes in what comes while nobody exchanges, the other delivers alerts, so that whoever gets an
// alert may exchange packets at once.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "ip_settings.h"
#include "npa_stream.h"
#include "qvn/transport/device.h"
#include "tcp_socket.h"

namespace qvn::ipv4 {

class NpaSession {
 public:
  // 0 and a session with both threads running, or why not.
  static std::uint32_t start(const Endpoint& endpoint, const Timeouts& timeouts,
                             std::shared_ptr<NpaSession>& session);

  // Closes, and waits for the threads. Not on one of them.
  ~NpaSession();

  // Sends a well-formed packet and returns once its reply has been delivered to the device's observers, on
  // the calling thread. One exchange at a time. Returns 0 when it was carried out, with `replyCode` 0 for a
  // reply and 1460 for none within the time-out, else the code of both. Without a device the reply is
  // dropped.
  std::uint32_t exchange(PacketView request, Device* device, std::uint32_t& replyCode);

  // False once the connection has ended.
  bool isAlive();

  // Whether what still comes could be taken for the reply to this request, or swallow it: an earlier one of
  // its kind is without a reply, or one came with a wrong length.
  bool isAmbiguous(PacketView request) const;

  // Whose observers get the alerts.
  void setDevice(Device& device);

  // Ends the connection without waiting for the threads: whoever closes may hold what an alert's receiver
  // waits for. An alert that is being delivered is finished, no other one starts.
  void close();

  // Both threads have ended or are about to, without touching anything but the session.
  bool isFinished() const { return runningThreads_ == 0; }

 private:
  struct Exchange {
    PacketView request;
    Packet reply;  // empty until it has come
  };

  NpaSession(TcpSocket socket, const Timeouts& timeouts);
  std::uint32_t startThreads();

  void readPackets();
  // Returns when no exchange has begun for a while.
  void letExchangesRead(std::unique_lock<std::mutex>& lock);
  // Until the reply has come, or the time is over, or the connection has ended.
  void awaitReply(Exchange& current, std::unique_lock<std::mutex>& lock);
  void takeInLocked();
  // Keeps an alert, the awaited reply, or nothing.
  void sortPacketLocked(Packet packet);
  void deliverAlerts();
  void endLocked(std::uint32_t code);

  TcpSocket socket_;
  const Timeouts timeouts_;

  mutable std::mutex mutex_;            // guards what follows
  std::condition_variable ended_;       // for the reader while it lets others read
  std::condition_variable alertsCame_;  // for the thread that delivers them, or the connection has ended
  std::vector<std::uint8_t> buffer_;
  NpaStream stream_;
  Exchange* exchange_ = nullptr;
  std::uint32_t exchangeCount_ = 0;
  std::vector<Packet> unanswered_;  // requests given up, whose replies may still come
  std::deque<Packet> alerts_;
  SubjectReference device_;    // whom alerts are for
  bool outOfStep_ = false;     // an exchange timed out in the middle of a packet
  std::uint32_t endedBy_ = 0;  // 0 while the connection lives

  std::atomic<int> runningThreads_{0};
  std::thread reader_;
  std::thread alertThread_;
};

}  // namespace qvn::ipv4
