#include "platform/base/forks.h"

#include <pthread.h>

#include <atomic>

namespace qvn::platform {
namespace {

std::atomic<std::uint32_t> count{0};

}  // namespace

std::uint32_t forks() {
  static const bool isCounting =
      pthread_atfork(nullptr, nullptr, [] { count.fetch_add(1, std::memory_order_relaxed); }) == 0;
  static_cast<void>(isCounting);
  return count.load(std::memory_order_relaxed);
}

}  // namespace qvn::platform
