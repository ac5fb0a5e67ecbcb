#include "platform/threads/event.h"

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
  WaitWord set;
  bool manualReset;
};
static_assert(sizeof(EventState) <= SharedObject::kPayloadSize);

class NativeEvent final : public NamedEvent {
 public:
  explicit NativeEvent(SharedObjectPtr object)
      : object_(std::move(object)), state_(*static_cast<EventState*>(object_->payload())) {}

  ErrorCode set() override {
    state_.set.store(1);
    // An auto-reset event wakes all waiters too: a single one might be killed before it takes the event.
    wakeWaiters(state_.set);
    return kSuccess;
  }

  ErrorCode reset() override {
    state_.set.store(0);
    return kSuccess;
  }

  WaitResult wait(Milliseconds timeout) override {
    const bool taken = waitOnWord(state_.set, timeout, object_->isShared() ? kRecheck : kInfinite, [this] {
      if (state_.manualReset) return state_.set.load() == 1;
      std::uint32_t expected = 1;
      return state_.set.compare_exchange_strong(expected, 0);
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
        new (payload) EventState{.set = initiallySet ? 1U : 0U, .manualReset = manualReset};
      },
      error);
  if (!object) return nullptr;
  return std::make_unique<NativeEvent>(std::move(object));
}

}  // namespace qvn::platform
