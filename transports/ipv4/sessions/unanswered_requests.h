// Requests that were given up, whose replies may still come: such a reply must not be taken for another
// one's.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace qvn::ipv4 {

class UnansweredRequests {
 public:
  // The oldest goes when there are too many.
  void add(std::span<const std::uint8_t> request) {
    if (requests_.size() == kMost) requests_.erase(requests_.begin());
    requests_.emplace_back(request.begin(), request.end());
  }

  template <typename Condition>
  bool contains(const Condition& condition) const {
    return std::any_of(requests_.begin(), requests_.end(), condition);
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
};

}  // namespace qvn::ipv4
