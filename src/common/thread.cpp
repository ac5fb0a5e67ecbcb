#include "common/thread.h"

#include "common/exception.h"
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

void Thread::create(Signal signal, const char* message, const char* file, std::int32_t line) {
  startBlock_ = std::make_unique<StartBlock>(StartBlock{runnable_, signal, nullptr});
  if (signal != Signal::None) {
    const bool manualReset = signal == Signal::Running;
    startBlock_->event = std::make_unique<Event>(manualReset, false, "", false);
  }
  StartBlock* const block = startBlock_.get();
  const auto body = [block]() -> std::uint32_t {
    if (block->signal == Signal::Running) block->event->set();
    const std::uint32_t exitCode = runGuarded(block->runnable);
    if (block->signal == Signal::Ended) block->event->set();
    return exitCode;
  };
  platform::ErrorCode error = platform::kSuccess;
  handle_ = platform::ThreadHandle::start(body, stackSize_, error);
  if (!handle_) throw Win32Exception(message, error, file, line);
  threadId_ = handle_->id();
}

void Thread::launch() { create(Signal::None, "Thread::launch()", "Thread", 253); }

void Thread::start() {
  create(Signal::Running, "Thread::start()", "", 0);
  handle_->setPriority(priority_);
  startBlock_->event->wait(platform::kInfinite);
}

void Thread::startAndWait() {
  create(Signal::Ended, "Thread::startAndWait()", "Thread", 227);
  startBlock_->event->wait(platform::kInfinite);
  handle_->wait(platform::kInfinite);
  startBlock_->event.reset();
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
