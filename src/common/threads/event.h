// An event that threads wait for, private or shared by name with other processes.
#pragma once

#include <memory>
#include <string>

#include "platform/base/access.h"
#include "platform/base/clock.h"
#include "platform/threads/event.h"

namespace qvn {

class Event {
 public:
  // Throws Win32Exception when the event cannot be made.
  Event(bool manualReset, bool initialState, const std::string& name, bool everyoneAccess);
  Event(const Event&) = delete;
  Event& operator=(const Event&) = delete;

  void set();
  void reset();

  // True when signalled within the time, false when the time ran out (0xFFFFFFFF: never); throws on failure.
  bool wait(platform::Milliseconds timeout);

 private:
  void createEvent(bool manualReset, bool initialState, platform::Access access);

  std::unique_ptr<platform::NamedEvent> event_;
  std::string name_;
};

}  // namespace qvn
