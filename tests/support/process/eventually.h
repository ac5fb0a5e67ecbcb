// Waiting for what another process does: asks again and again until it holds or the limit has passed.
#pragma once

#include <poll.h>

#include <chrono>

namespace qvn::test {

template <typename Holds>
bool eventually(const Holds& holds, std::chrono::seconds limit = std::chrono::seconds(30)) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  constexpr int kBetweenMilliseconds = 2;
  while (!holds()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    poll(nullptr, 0, kBetweenMilliseconds);
  }
  return true;
}

}  // namespace qvn::test
