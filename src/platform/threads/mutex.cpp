#include "platform/threads/mutex.h"

#include <pthread.h>

#include <cerrno>
#include <new>
#include <utility>

#include "platform/base/failure.h"
#include "platform/threads/shared_object.h"
#include "platform/threads/thread.h"
#include "platform/threads/wait_word.h"

namespace qvn::platform {
namespace {

// How soon a waiter with a time limit notices that the holder died.
constexpr Milliseconds kRecheck = 20;

// The robust lock is the system's, which knows when its holder dies. Waits with a time limit wait for the
// count of releases to change and then try it, since their time is the clock's.
struct MutexState {
  pthread_mutex_t lock;
  std::atomic<std::uint32_t> owner;  // the holding thread; that of a dead holder until the next one
  WaitWord releases;
  std::atomic<std::uint32_t> timedWaiters;
};
static_assert(sizeof(MutexState) <= SharedObject::kPayloadSize);

int initialise(MutexState& state) {
  pthread_mutexattr_t attributes;
  int result = pthread_mutexattr_init(&attributes);
  if (result != 0) return result;
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
  pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
  result = pthread_mutex_init(&state.lock, &attributes);
  pthread_mutexattr_destroy(&attributes);
  return result;
}

class NativeMutex final : public NamedMutex {
 public:
  explicit NativeMutex(SharedObjectPtr object)
      : object_(std::move(object)), state_(*static_cast<MutexState*>(object_->payload())) {}

  WaitResult acquire(Milliseconds timeout) override {
    const int result = timeout == kInfinite ? pthread_mutex_lock(&state_.lock) : lockWithin(timeout);
    const std::uint32_t caller = currentThreadId();
    // What another holder had counted is void: one that died, or that of the process this one was forked
    // from.
    bool again = state_.owner.load() == caller;
    switch (result) {
      case 0:
        break;
      case EOWNERDEAD:
        pthread_mutex_consistent(&state_.lock);
        again = false;
        break;
      case EBUSY:
        return WaitResult::TimedOut;
      default:
        setLastError(errorFromErrno(result));
        return WaitResult::Failed;
    }
    object_->holds.store(again ? object_->holds.load() + 1 : 1);
    state_.owner.store(caller);
    return result == EOWNERDEAD ? WaitResult::Abandoned : WaitResult::Signalled;
  }

  ErrorCode release() override {
    if (state_.owner.load() != currentThreadId()) return fail(kNotOwner);
    if (object_->holds.fetch_sub(1) == 1) state_.owner.store(0);
    const int result = pthread_mutex_unlock(&state_.lock);
    if (result != 0) return fail(errorFromErrno(result));
    state_.releases.fetch_add(1);
    if (state_.timedWaiters.load() != 0) wakeWaiters(state_.releases);
    return kSuccess;
  }

 private:
  int lockWithin(Milliseconds timeout) {
    int result = EBUSY;
    state_.timedWaiters.fetch_add(1);
    waitOnWord(state_.releases, timeout, kRecheck, [&] {
      result = pthread_mutex_trylock(&state_.lock);
      return result != EBUSY;
    });
    state_.timedWaiters.fetch_sub(1);
    return result;
  }

  const SharedObjectPtr object_;
  MutexState& state_;
};

}  // namespace

NamedMutex::~NamedMutex() = default;

std::unique_ptr<NamedMutex> NamedMutex::create(const std::string& name, bool initiallyOwned, Access access,
                                               ErrorCode& error) {
  int result = 0;
  bool owned = false;
  auto object = SharedObjectPtr::open(
      name, SharedObject::Kind::Mutex, access,
      [&](void* payload) {
        auto& state = *new (payload) MutexState{};
        result = initialise(state);
        // Taken before anybody else can open it, so it is free.
        owned = result == 0 && initiallyOwned && pthread_mutex_trylock(&state.lock) == 0;
        if (owned) state.owner.store(currentThreadId());
      },
      error);
  if (!object) return nullptr;
  if (result != 0) {
    error = fail(errorFromErrno(result));
    return nullptr;
  }
  if (owned) object->holds.store(1);
  return std::make_unique<NativeMutex>(std::move(object));
}

}  // namespace qvn::platform
