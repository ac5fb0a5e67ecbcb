#include "patience.h"

#include <algorithm>
#include <utility>

namespace qvn::cups {

namespace {

constexpr platform::Milliseconds kShortestPause = 500;
constexpr platform::Milliseconds kLongestPause = 15000;

}  // namespace

Patience::Patience(platform::Milliseconds limit, Wait wait)
    : deadline_(platform::clock().monotonicMilliseconds() + limit),
      wait_(std::move(wait)),
      pause_(kShortestPause) {}

bool Patience::again() {
  const std::uint64_t now = platform::clock().monotonicMilliseconds();
  if (now >= deadline_) return false;
  const std::uint64_t left = deadline_ - now;
  const auto pause = static_cast<platform::Milliseconds>(std::min<std::uint64_t>(pause_, left));
  pause_ = std::min(2 * pause_, kLongestPause);
  return wait_(pause);
}

}  // namespace qvn::cups
