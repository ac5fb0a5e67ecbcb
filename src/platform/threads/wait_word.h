// Waiting on a word of memory that several processes may map.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>

#include "platform/base/clock.h"

namespace qvn::platform {

using WaitWord = std::atomic<std::uint32_t>;
static_assert(WaitWord::is_always_lock_free);

// Blocks until `take` gives true or `timeout` has passed; returns what `take` gave last. Whoever makes `take`
// succeed changes `word` and then calls wakeWaiters; should it be killed in between, the waiter looks again
// by itself after `recheck`.
bool waitOnWord(WaitWord& word, Milliseconds timeout, Milliseconds recheck,
                const std::function<bool()>& take);

void wakeWaiters(WaitWord& word);

}  // namespace qvn::platform
