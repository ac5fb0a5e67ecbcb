#include "bidi/request_id.h"

#include <mutex>

#include "platform/clock.h"

namespace qvn {
namespace {

// Guards the next id; 0 before the first.
std::mutex nextIdLock;
std::uint32_t nextId = 0;

}  // namespace

std::uint32_t nextRequestId() {
  const std::scoped_lock lock(nextIdLock);
  while (nextId == 0) {
    nextId = platform::tickCount() % 500 * 1000;
    if (nextId == 0) platform::sleep(1);
  }
  return nextId++;
}

}  // namespace qvn
