// One channel to a device's scan part. Every command that the device sends goes to the scanner, but
// for replies that nobody waits for any more.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "qvn/transport/esc_command_table.h"
#include "shared/sessions/stream_session.h"
#include "shared/streams/esc_stream.h"

namespace qvn::shared {

class EscSession : public StreamSession<EscStream> {
 public:
  using StreamSession::StreamSession;
  ~EscSession() override { finish(); }

  using Session::send;
  // Sends without waiting for anything: 0, or why not all went out, with what did in `sent`.
  std::uint32_t send(esc::Bytes bytes, std::size_t& sent);

  // Whether what still comes could be taken for what these bytes bring, or swallow it: an earlier request
  // that the same could answer is without a reply, a page has not ended, or a command came with a wrong
  // length.
  bool isAmbiguous(esc::Bytes bytes) const;

 protected:
  bool isReply(const esc::Bytes& command, Bytes request) const override {
    return esc::isReply(request, command);
  }
  bool isForDeviceLocked(const esc::Bytes& command, bool isAwaited) override;
  void deliver(const esc::Bytes& command, const DeviceReference& device) override { lend(device, command); }
  void beginLocked() override { answered_.clear(); }
  void answeredLocked(Bytes request) override;

 private:
  bool isStaleLocked(esc::Bytes command, bool isAwaited);

  // Guarded by the lock.
  // The last request, whose reply may come twice, until something is sent.
  std::vector<std::uint8_t> answered_;
  bool pageUnderWay_ = false;  // a status ends it
};

}  // namespace qvn::shared
