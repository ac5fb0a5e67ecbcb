// One channel to a device's bidi part. A second thread delivers the alerts, so that whoever gets one
// may exchange packets at once.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>

#include "shared/sessions/stream_session.h"
#include "shared/streams/npa_stream.h"

namespace qvn::shared {

// What is neither an alert nor a reply that is waited for goes nowhere.
class NpaSession : public StreamSession<NpaStream> {
 public:
  using StreamSession::StreamSession;
  ~NpaSession() override { finish(); }

  std::uint32_t startThreads() override;

  // Sends a packet to which there is no reply; not while an exchange runs. 0, or why it did not go out.
  using Session::send;
  std::uint32_t send(PacketView packet);

  // Whether what still comes could be taken for the reply to this request, or swallow it: an earlier one of
  // its kind is without a reply, or one came with a wrong length.
  bool isAmbiguous(PacketView request) const;

 protected:
  bool isReply(const PacketView& packet, Bytes request) const override { return answers(packet, request); }
  bool isForDeviceLocked(const PacketView& packet, bool isAwaited) override;
  void deliver(const PacketView& packet, const DeviceReference& device) override { lend(device, packet); }
  void deliverEnd() override {}
  void wakeLocked() override;

 private:
  void deliverAlerts();

  // Guarded by the lock.
  std::condition_variable alertsCame_;  // for the thread that delivers them, or the connection has ended
  std::deque<Packet> alerts_;
};

}  // namespace qvn::shared
