#include "common/threads/thread.h"

#include "common/exception.h"
#include "platform/base/error.h"
#include "platform/threads/event.h"
#include "qvn/result_codes.h"

namespace qvn {
namespace {

constexpr std::uint32_t kDefaultStackSize = 4096;

std::uint32_t runGuarded(Runnable& runnable) {
  try {
    return runnable.run();
  } catch (const Exception& exception) {
    return exception.getCode();
  } catch (...) {
    // A transport's code runs on these threads; what it throws must not end the client's process.
    return QRN_ERROR_INTERNAL_ERROR;
  }
}

}  // namespace

Thread::Thread(Runnable& runnable) : stackSize_(kDefaultStackSize), runnable_(runnable) {}

Thread::~Thread() {
  if (handle_) handle_->wait(platform::kInfinite);
}

void Thread::create(bool signalsRunning, const char* message, const char* file, std::int32_t line) {
  startBlock_ = std::make_unique<StartBlock>(StartBlock{runnable_, nullptr});
  if (signalsRunning) startBlock_->running = std::make_unique<Event>(true, false, "", false);
  StartBlock* const block = startBlock_.get();
  const auto body = [block]() -> std::uint32_t {
    if (block->running) block->running->set();
    return runGuarded(block->runnable);
  };
  platform::ErrorCode error = platform::kSuccess;
  handle_ = platform::ThreadHandle::start(body, stackSize_, error);
  if (!handle_) throw Win32Exception(message, error, file, line);
}

void Thread::launch() { create(false, "Thread::launch()", "Thread", 253); }

void Thread::start() {
  create(true, "Thread::start()", "", 0);
  handle_->setPriority(priority_);
  startBlock_->running->wait(platform::kInfinite);
}

// The thread's end says it all: an event of its own before it would only wake the caller twice.
void Thread::startAndWait() {
  create(false, "Thread::startAndWait()", "Thread", 227);
  handle_->wait(platform::kInfinite);
}

bool Thread::getExitCode(std::uint32_t& code) const {
  if (!handle_) return false;
  code = handle_->exitCode();
  return code != platform::kStillActive;
}

bool Thread::getHandle(platform::ThreadHandle*& handle) const {
  if (!handle_) return false;
  handle = handle_.get();
  return true;
}

bool Thread::waitFor(platform::Milliseconds timeout) {
  return handle_ && handle_->wait(timeout) == platform::WaitResult::Signalled;
}

}  // namespace qvn
