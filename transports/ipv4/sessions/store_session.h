// One TCP connection to a Bpd scanner's scan port. Every block that the device sends goes to the scanner;
// those who wait for a reply are told when it has got there.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "sessions/pending_reply.h"
#include "sessions/stream_session.h"
#include "streams/block_stream.h"

namespace qvn::ipv4 {

class StoreSession : public StreamSession<BlockStream> {
 public:
  using StreamSession::StreamSession;
  ~StoreSession() override { finish(); }

  // Sends a document with that id, one at a time, whose reply is then awaited. The id stays the caller's
  // until then.
  void send(std::span<const std::uint8_t> document, std::string_view id, PendingReply& reply);

  // Returns once the reply has been delivered, or not, and forgets it. Any number may wait at once. 0 when
  // the exchange was carried out, with `replyCode` 0 for a reply and 1460 for none within the time-out, else
  // the code of both.
  std::uint32_t await(PendingReply& reply, std::uint32_t& replyCode);

 protected:
  void deliver(const Block& block) override;
  void settleLocked() override;
  void deliverEnd() override;
  void wakeLocked() override;

 private:
  struct Request {
    std::string_view id;
    PendingReply* reply;
  };

  // Guarded by the lock.
  std::vector<Request> unanswered_;  // in the order they were sent
  PendingReply* arrived_ = nullptr;  // while it is being delivered
};

}  // namespace qvn::ipv4
