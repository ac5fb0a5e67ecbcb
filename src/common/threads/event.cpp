#include "common/threads/event.h"

#include "common/exception.h"
#include "platform/base/error.h"

namespace qvn {

Event::Event(bool manualReset, bool initialState, const std::string& name, bool everyoneAccess)
    : name_(name) {
  createEvent(manualReset, initialState, {.everyone = everyoneAccess, .inheritable = false});
}

void Event::createEvent(bool manualReset, bool initialState, platform::Access access) {
  platform::ErrorCode error = platform::kSuccess;
  event_ = platform::NamedEvent::create(name_, manualReset, initialState, access, error);
  if (!event_) throw Win32Exception("Event::createEvent() failed", error, "", 0);
}

void Event::set() {
  const platform::ErrorCode error = event_->set();
  if (error != platform::kSuccess) throw Win32Exception("Event::set() failed", error, "Event", 88);
}

void Event::reset() {
  const platform::ErrorCode error = event_->reset();
  if (error != platform::kSuccess) throw Win32Exception("Event::reset() failed", error, "Event", 118);
}

bool Event::wait(platform::Milliseconds timeout) {
  const platform::WaitResult result = event_->wait(timeout);
  if (result == platform::WaitResult::Failed) {
    throw Win32Exception("Event::wait() failed", platform::lastError(), "Event", 163);
  }
  return result == platform::WaitResult::Signalled;
}

}  // namespace qvn
