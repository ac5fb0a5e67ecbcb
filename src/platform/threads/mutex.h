// A mutex owned by a thread, private to the process or shared by name with others; its holder may take it
// again and gives it up once per time taken.
#pragma once

#include <memory>
#include <string>

#include "platform/base/access.h"
#include "platform/base/clock.h"
#include "platform/base/error.h"
#include "platform/threads/event.h"

namespace qvn::platform {

class QVN_PLATFORM_API NamedMutex {
 public:
  // Makes a mutex, or opens the one of that name if it exists. An empty name makes a private one. With
  // `initiallyOwned` the caller holds it once, if it made it. Null on failure, with `error` set.
  static std::unique_ptr<NamedMutex> create(const std::string& name, bool initiallyOwned, Access access,
                                            ErrorCode& error);
  virtual ~NamedMutex();

  // Signalled or Abandoned (the previous holder died; the caller now holds it), TimedOut, or Failed with the
  // thread's last error set.
  virtual WaitResult acquire(Milliseconds timeout) = 0;

  // 288 when the caller does not hold it.
  virtual ErrorCode release() = 0;
};

}  // namespace qvn::platform
