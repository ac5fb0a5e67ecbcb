// An event: a flag that threads wait for, private to the process or shared by name with others.
#pragma once

#include <memory>
#include <string>

#include "platform/base/access.h"
#include "platform/base/clock.h"
#include "platform/base/error.h"

namespace qvn::platform {

enum class WaitResult { Signalled, Abandoned, TimedOut, Failed };

class QVN_PLATFORM_API NamedEvent {
 public:
  // Makes an event, or opens the one of that name if it exists (its first maker's settings then hold). An
  // empty name makes a private one. Null on failure, with `error` set. Names compare as they are; any text
  // is a safe name (see stateDirectory in paths.h).
  static std::unique_ptr<NamedEvent> create(const std::string& name, bool manualReset, bool initiallySet,
                                            Access access, ErrorCode& error);
  virtual ~NamedEvent();

  // A manual-reset event stays set until reset and releases every waiter; an auto-reset one releases one.
  virtual ErrorCode set() = 0;
  virtual ErrorCode reset() = 0;

  // Signalled, TimedOut, or Failed with the thread's last error set.
  virtual WaitResult wait(Milliseconds timeout) = 0;
};

}  // namespace qvn::platform
