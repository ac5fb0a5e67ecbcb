#include "api/call_gate.h"

#include <atomic>

namespace qvn {
namespace {

// The number of calls in flight, and a bit that is set while the gate is open.
constexpr std::uint32_t kOpen = 0x80000000;
std::atomic<std::uint32_t> gate{0};

// How many of the calls in flight are the calling thread's: callbacks may call the library again.
thread_local std::uint32_t ownCalls = 0;

void leave() {
  const std::uint32_t before = gate.fetch_sub(1, std::memory_order_acq_rel);
  if ((before & kOpen) == 0) gate.notify_all();
}

}  // namespace

CallGate::Pass::Pass()
    : entered_((gate.fetch_add(1, std::memory_order_acq_rel) & kOpen) != 0 || ownCalls > 0) {
  if (entered_) {
    ++ownCalls;
  } else {
    leave();
  }
}

CallGate::Pass::~Pass() {
  if (!entered_) return;
  --ownCalls;
  leave();
}

void CallGate::open() { gate.fetch_or(kOpen, std::memory_order_acq_rel); }

void CallGate::close() {
  gate.fetch_and(~kOpen, std::memory_order_acq_rel);
  std::uint32_t state = gate.load(std::memory_order_acquire);
  while (state != 0) {
    gate.wait(state, std::memory_order_acquire);
    state = gate.load(std::memory_order_acquire);
  }
}

}  // namespace qvn
