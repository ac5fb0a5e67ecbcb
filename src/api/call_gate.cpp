#include "api/call_gate.h"

#include <atomic>

#include "common/exception.h"
#include "platform/base/forks.h"
#include "qvn/result_codes.h"

namespace qvn {
namespace {

// The number of calls in flight, and a bit that is set while the gate is open.
constexpr std::uint32_t kOpen = 0x80000000;
std::atomic<std::uint32_t> gate{0};

std::atomic<std::uint32_t> visits{0};

// The process that these counts are about, by its forks.
std::atomic<std::uint32_t> countedAt{0};

// Whether the counts are those that this process got from its parent by a fork. A parent that had nothing to
// do in the library leaves nothing in it either.
bool areInherited() {
  const std::uint32_t now = platform::forks();
  if (countedAt == now) return false;
  if (gate == 0 && visits == 0) countedAt = now;
  return countedAt != now;
}

// How many of the calls in flight are the calling thread's: callbacks may call the library again.
thread_local std::uint32_t ownCalls = 0;

void leave() {
  const std::uint32_t before = gate.fetch_sub(1, std::memory_order_acq_rel);
  if ((before & kOpen) == 0) gate.notify_all();
}

}  // namespace

CallGate::Pass::Pass() : entered_(false) {
  if (areInherited()) return;
  entered_ = (gate.fetch_add(1, std::memory_order_acq_rel) & kOpen) != 0 || ownCalls > 0;
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

CallGate::Visit::Visit() {
  if (areInherited()) throw Win32Exception("forked off", QRN_ERROR_INVALID_FUNCTION, "", 0);
  ++visits;
}

CallGate::Visit::~Visit() { --visits; }

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
