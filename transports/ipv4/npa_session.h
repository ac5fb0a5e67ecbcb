// One TCP connection to a device's bidi port, with the two threads that serve it: the reader takes in packets
// and delivers replies, the other delivers alerts, so that whoever gets an alert may exchange packets at
// once.
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

  // Sends a well-formed packet and returns once its reply has been delivered to the device's observers on the
  // reader thread. One exchange at a time. Returns 0 when it was carried out, with `replyCode` 0 for a reply
  // and 1460 for none within the time-out, else the code of both. Without a device the reply is dropped.
  std::uint32_t exchange(PacketView request, Device* device, std::uint32_t& replyCode);

  // Sends a packet to which there is no reply; not while an exchange runs. 0, or why it did not go out.
  std::uint32_t send(PacketView packet);

  // False once the connection has ended.
  bool isAlive() const;

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
  enum class Stage : std::uint8_t { Waiting, Delivering, Done };
  struct Exchange {
    PacketView request;
    Device* device;
    Stage stage = Stage::Waiting;
  };

  NpaSession(TcpSocket socket, const Timeouts& timeouts) : socket_(std::move(socket)), timeouts_(timeouts) {}
  std::uint32_t startThreads();

  void readPackets();
  void takeInLocked(std::vector<std::uint8_t>& buffer);
  // Keeps an alert, the awaited reply, or nothing.
  void sortPacketLocked(Packet packet);
  void deliverReply();
  void deliverAlerts();
  bool nothingUnread() const;
  void endLocked(std::uint32_t code);

  TcpSocket socket_;
  const Timeouts timeouts_;
  Packet reply_;  // the reader's own

  mutable std::mutex mutex_;            // guards what follows
  std::condition_variable changed_;     // for whoever exchanges
  std::condition_variable alertsCame_;  // for the thread that delivers them, or the connection has ended
  NpaStream stream_;
  Exchange* exchange_ = nullptr;
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
