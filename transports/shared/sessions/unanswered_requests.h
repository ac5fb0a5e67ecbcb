// Requests that were given up, whose replies may still come: such a reply must not be taken for another
// one's, and after one that was given up in the middle of something nothing that comes can be trusted.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace qvn::shared {

class UnansweredRequests {
 public:
  // The oldest goes when there are too many. `partial` tells that something had begun and waits for its rest.
  void add(std::span<const std::uint8_t> request, bool partial) {
    outOfStep_ = partial;
    if (requests_.size() == kMost) requests_.erase(requests_.begin());
    requests_.emplace_back(request.begin(), request.end());
  }

  // Whether what still comes may be something for which that is true.
  template <typename Condition>
  bool mayBring(const Condition& condition) const {
    return outOfStep_ || std::any_of(requests_.begin(), requests_.end(), condition);
  }

  // Takes the first one out of which that is true; false when there is none.
  template <typename Condition>
  bool take(const Condition& condition) {
    const auto found = std::find_if(requests_.begin(), requests_.end(), condition);
    if (found == requests_.end()) return false;
    requests_.erase(found);
    return true;
  }

 private:
  static constexpr std::size_t kMost = 64;

  std::vector<std::vector<std::uint8_t>> requests_;
  bool outOfStep_ = false;
};

}  // namespace qvn::shared
