// The numbers that tie a reply to its request.
#pragma once

#include <cstdint>
#include <mutex>

namespace qvn {

// A series of ids, each one above the last and none 0. The first is a multiple of 1000 from 1000 to 499000,
// taken from the clock. May be asked from any thread.
class RequestIds {
 public:
  std::uint32_t next();

 private:
  std::mutex lock_;
  std::uint32_t next_ = 0;  // 0 before the first
};

// The next of the process's series.
std::uint32_t nextRequestId();

}  // namespace qvn
