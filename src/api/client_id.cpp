#include "api/client_id.h"

#include <atomic>

#include "platform/base/clock.h"

namespace qvn {
namespace {

std::atomic<bool> seeded{false};
std::atomic<std::uint32_t> nextId{0};

}  // namespace

std::uint32_t nextClientId() {
  std::uint32_t candidate = nextId.load();
  std::uint32_t id = 0;
  do {
    const bool first = candidate == 0 && !seeded.load();
    const std::uint32_t wanted = first ? platform::tickCount() : candidate;
    id = wanted == 0 ? 1 : wanted;
  } while (!nextId.compare_exchange_weak(candidate, id + 1));
  seeded = true;
  return id;
}

}  // namespace qvn
