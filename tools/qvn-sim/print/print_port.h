// The raw print port: one connection at a time, the next one waits.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>

#include "base/bytes.h"
#include "faults/fault_switches.h"
#include "net/event_loop.h"
#include "net/sockets.h"
#include "print/job_queue.h"

namespace sim {

class PrintPort {
 public:
  PrintPort(EventLoop& loop, FaultSwitches& faults, JobQueue& jobs, const std::string& address,
            std::uint16_t port);

  std::uint16_t port() const { return localPort(listener_); }

  // Takes in a host that is connected otherwise, in its turn. `isBroken` tells how its connection has ended
  // when it has: by the host, or by a line that broke.
  void connect(Descriptor socket, std::shared_ptr<const bool> isBroken);

  // Takes in what has arrived, as far as the faults allow.
  void readArrived();

 private:
  enum class ReadResult : std::uint8_t { Data, Nothing, Ended, Broken };
  struct Host {
    Descriptor socket;
    std::shared_ptr<const bool> isBroken;  // none when the socket knows
  };

  bool takeNextHost();
  ReadResult readOnce();
  void closeConnection();
  void drained();
  std::size_t allowance();

  EventLoop& loop_;
  FaultSwitches& faults_;
  JobQueue& jobs_;
  Descriptor listener_;
  std::deque<Host> waiting_;  // that are connected otherwise
  Host host_;                 // whose data is taken; its socket is not open when there is none
  Bytes buffer_;
  std::uint64_t allowed_ = 0;  // bytes that a slow device will still take before the next step
  bool stepPending_ = false;
  std::uint64_t received_ = 0;  // in all, to tell silence
  bool silencePending_ = false;
};

}  // namespace sim
