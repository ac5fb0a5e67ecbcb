#include "platform/threads/event.h"

#include <atomic>
#include <cstdint>
#include <new>
#include <utility>

#include "platform/base/failure.h"
#include "platform/threads/shared_object.h"
#include "platform/threads/wait_word.h"

namespace qvn::platform {
namespace {

constexpr Milliseconds kRecheck = 250;

// Without any lock, so nobody can be killed holding one.
struct EventState {
  std::atomic<std::uint32_t> isSet;
  // What waiters wait on: the flag may be what they saw again although it was set in between.
  WaitWord sets;
  bool manualReset;
};
static_assert(sizeof(EventState) <= SharedObject::kPayloadSize);

class NativeEvent final : public NamedEvent {
 public:
  explicit NativeEvent(SharedObjectPtr object)
      : object_(std::move(object)), state_(*static_cast<EventState*>(object_->payload())) {}

  ErrorCode set() override {
    state_.isSet.store(1);
    state_.sets.fetch_add(1);
    // An auto-reset event wakes all waiters too: a single one might be killed before it takes the event.
    wakeWaiters(state_.sets);
    return kSuccess;
  }

  ErrorCode reset() override {
    state_.isSet.store(0);
    return kSuccess;
  }

  WaitResult wait(Milliseconds timeout) override {
    const bool taken = waitOnWord(state_.sets, timeout, object_->isShared() ? kRecheck : kInfinite, [this] {
      if (state_.manualReset) return state_.isSet.load() == 1;
      std::uint32_t expected = 1;
      return state_.isSet.compare_exchange_strong(expected, 0);
    });
    return taken ? WaitResult::Signalled : WaitResult::TimedOut;
  }

 private:
  const SharedObjectPtr object_;
  EventState& state_;
};

}  // namespace

NamedEvent::~NamedEvent() = default;

std::unique_ptr<NamedEvent> NamedEvent::create(const std::string& name, bool manualReset, bool initiallySet,
                                               Access access, ErrorCode& error) {
  auto object = SharedObjectPtr::open(
      name, SharedObject::Kind::Event, access,
      [&](void* payload) {
        new (payload) EventState{.isSet = initiallySet ? 1U : 0U, .sets = 0, .manualReset = manualReset};
      },
      error);
  if (!object) return nullptr;
  return std::make_unique<NativeEvent>(std::move(object));
}

}  // namespace qvn::platform
