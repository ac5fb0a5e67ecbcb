// A thread that runs a Runnable. Each object is started once.
#pragma once

#include <cstdint>
#include <memory>

#include "common/threads/event.h"
#include "common/threads/runnable.h"
#include "platform/base/clock.h"
#include "platform/threads/thread.h"

namespace qvn {

class Thread {
 public:
  explicit Thread(Runnable& runnable);
  Thread(const Thread&) = delete;
  Thread& operator=(const Thread&) = delete;

  // Waits without limit for the thread to end.
  virtual ~Thread();

  // Each throws Win32Exception when the thread cannot be made. An exception that leaves the runnable ends the
  // thread with the exception's code, 1359 for one that is not the library's.
  void launch();        // returns at once
  void start();         // returns when the thread runs
  void startAndWait();  // returns when the thread has ended

  // False while the thread runs (the code is then 259) and when none was started (the code is then
  // untouched).
  bool getExitCode(std::uint32_t& code) const;
  bool getHandle(platform::ThreadHandle*& handle) const;
  bool waitFor(platform::Milliseconds timeout);

 private:
  // What the new thread works from.
  struct StartBlock {
    Runnable& runnable;
    std::unique_ptr<Event> running;  // set once it runs, when somebody waits for that
  };

  void create(bool signalsRunning, const char* message, const char* file, std::int32_t line);

  std::unique_ptr<StartBlock> startBlock_;
  std::uint32_t stackSize_;
  std::int32_t priority_ = 0;
  std::unique_ptr<platform::ThreadHandle> handle_;
  Runnable& runnable_;
};

}  // namespace qvn
