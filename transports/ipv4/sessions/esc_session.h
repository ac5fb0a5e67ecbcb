// One TCP connection to a device's scan port. Every command that the device sends goes to the scanner, but
// for replies that nobody waits for any more.
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <vector>

#include "qvn/transport/esc_command_table.h"
#include "sessions/stream_session.h"
#include "streams/esc_stream.h"

namespace qvn::ipv4 {

class EscSession : public StreamSession<EscStream> {
 public:
  using StreamSession::StreamSession;
  ~EscSession() override { finish(); }

  // Sends a command and returns once its reply has been delivered. One exchange or send at a time. Returns 0
  // when it was carried out, with `replyCode` 0 for a reply and 1460 for none within the time-out, else the
  // code of both.
  std::uint32_t exchange(esc::Bytes request, std::uint32_t& replyCode);

  // Sends without waiting for anything: 0, or why not all went out, with what did in `sent`.
  std::uint32_t send(esc::Bytes bytes, std::size_t& sent);

  // Whether what still comes could be taken for what these bytes bring, or swallow it: an earlier request
  // that the same could answer is without a reply, a page has not ended, or a command came with a wrong
  // length.
  bool isAmbiguous(esc::Bytes bytes) const;

 protected:
  void deliver(const esc::Bytes& command) override;
  void settleLocked() override;

 private:
  enum class Stage : std::uint8_t { Preparing, Waiting, Delivering, Delivered, Done };
  struct Exchange {
    esc::Bytes request;
    Stage stage = Stage::Preparing;
  };

  void waitForUnreadLocked(std::unique_lock<std::mutex>& lock);
  bool isStaleLocked(esc::Bytes command);

  // Guarded by the lock.
  Exchange* exchange_ = nullptr;
  // Requests given up, whose replies may still come.
  std::vector<std::vector<std::uint8_t>> unanswered_;
  // The last request, whose reply may come twice, until something is sent.
  std::vector<std::uint8_t> answered_;
  bool pageUnderWay_ = false;  // a status ends it
  bool outOfStep_ = false;     // an exchange timed out in the middle of a command
};

}  // namespace qvn::ipv4
