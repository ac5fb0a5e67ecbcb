// Counts what the calling thread takes from the heap.
#pragma once

#include <cstdint>

namespace qvn::bench {

std::uint64_t allocationsOfThisThread();

template <typename Action>
std::uint64_t allocationsOf(Action&& action) {
  const std::uint64_t before = allocationsOfThisThread();
  action();
  return allocationsOfThisThread() - before;
}

}  // namespace qvn::bench
