// Tells which of many cases a process is in when it crashes, and ends it when a case hangs.
#pragma once

#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <thread>

namespace qvn::test {

class CaseWatch {
 public:
  CaseWatch() { static_cast<void>(handling_); }

  // Whether the case is to run: QVN_SWEEP_CASE in the environment is a part of the names of those that are.
  bool begin(const std::string& name) {
    const char* const wanted = std::getenv("QVN_SWEEP_CASE");
    if (wanted != nullptr && name.find(wanted) == std::string::npos) return false;
    const std::lock_guard guard(mutex_);
    name_[("\nin the case \"" + name.substr(0, 200) + "\"\n").copy(name_, sizeof name_ - 1)] = '\0';
    ++cases_;
    changed_.notify_all();
    return true;
  }

 private:
  static constexpr auto kPatience = std::chrono::seconds(20);

  static void tell(int signal) {
    static_cast<void>(!write(STDERR_FILENO, name_, std::strlen(name_)));
    sigaction(signal, &previous_[signal], nullptr);
  }
  static bool handle() {
    struct sigaction action {};
    action.sa_handler = tell;
    for (const int signal : {SIGSEGV, SIGABRT}) sigaction(signal, &action, &previous_[signal]);
    return true;
  }

  void watch(const std::stop_token& over) {
    std::unique_lock lock(mutex_);
    while (!over.stop_requested()) {
      const auto begun = [this, seen = cases_] { return cases_ != seen; };
      if (!changed_.wait_for(lock, over, kPatience, begun) && !over.stop_requested()) std::abort();
    }
  }

  static inline char name_[256];
  static inline struct sigaction previous_[NSIG];
  static inline const bool handling_ = handle();
  std::mutex mutex_;
  std::condition_variable_any changed_;
  int cases_ = 0;
  std::jthread thread_{[this](const std::stop_token& over) { watch(over); }};
};

}  // namespace qvn::test
