// One TCP connection to a device's bidi port, with the two threads that serve it: the reader takes in packets
// and delivers replies, the other delivers alerts, so that whoever gets an alert may exchange packets at
// once.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <vector>

#include "qvn/transport/device.h"
#include "sessions/session.h"
#include "streams/npa_stream.h"

namespace qvn::ipv4 {

class NpaSession : public Session {
 public:
  using Session::Session;
  ~NpaSession() override { finish(); }

  std::uint32_t startThreads() override;

  // Sends a well-formed packet and returns once its reply has been delivered to the device's observers on the
  // reader thread. One exchange at a time. Returns 0 when it was carried out, with `replyCode` 0 for a reply
  // and 1460 for none within the time-out, else the code of both. Without a device the reply is dropped.
  std::uint32_t exchange(PacketView request, Device* device, std::uint32_t& replyCode);

  // Sends a packet to which there is no reply; not while an exchange runs. 0, or why it did not go out.
  std::uint32_t send(PacketView packet);

  // Whether what still comes could be taken for the reply to this request, or swallow it: an earlier one of
  // its kind is without a reply, or one came with a wrong length.
  bool isAmbiguous(PacketView request) const;

 protected:
  void wakeLocked() override;

 private:
  enum class Stage : std::uint8_t { Waiting, Delivering, Done };
  struct Exchange {
    PacketView request;
    Device* device;
    Stage stage = Stage::Waiting;
  };

  void readPackets();
  void takeInLocked(std::vector<std::uint8_t>& buffer);
  // Keeps an alert, the awaited reply, or nothing.
  void sortPacketLocked(Packet packet);
  void deliverReply();
  void deliverAlerts();
  bool nothingUnread() const;

  Packet reply_;  // the reader's own

  // Guarded by the lock.
  std::condition_variable alertsCame_;  // for the thread that delivers them, or the connection has ended
  NpaStream stream_;
  Exchange* exchange_ = nullptr;
  std::vector<Packet> unanswered_;  // requests given up, whose replies may still come
  std::deque<Packet> alerts_;
  bool outOfStep_ = false;  // an exchange timed out in the middle of a packet
};

}  // namespace qvn::ipv4
