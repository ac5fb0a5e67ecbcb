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
  CaseWatch() {
    for (const int signal : {SIGSEGV, SIGABRT}) {
      struct sigaction action {};
      action.sa_handler = tell;
      sigaction(signal, &action, &previous_[signal]);
    }
    thread_ = std::thread([this] { run(); });
  }
  ~CaseWatch() {
    begin("", true);
    thread_.join();
    for (const int signal : {SIGSEGV, SIGABRT}) sigaction(signal, &previous_[signal], nullptr);
  }
  CaseWatch(const CaseWatch&) = delete;
  CaseWatch& operator=(const CaseWatch&) = delete;

  // Whether the case is to run: QVN_SWEEP_CASE in the environment is a part of the names of those that are.
  bool begin(const std::string& name) {
    const char* const wanted = std::getenv("QVN_SWEEP_CASE");
    if (wanted != nullptr && name.find(wanted) == std::string::npos) return false;
    begin(name, false);
    return true;
  }

 private:
  static constexpr auto kPatience = std::chrono::seconds(20);

  static void tell(int signal) {
    static_cast<void>(!write(STDERR_FILENO, name_, std::strlen(name_)));
    sigaction(signal, &previous_[signal], nullptr);
  }

  void begin(const std::string& name, bool over) {
    const std::lock_guard guard(mutex_);
    ("\nin the case: " + name.substr(0, sizeof name_ - 20) + "\n").copy(name_, sizeof name_ - 1);
    name_[std::min(sizeof name_ - 1, name.size() + 15)] = '\0';
    over_ = over;
    ++cases_;
    changed_.notify_all();
  }

  void run() {
    std::unique_lock lock(mutex_);
    while (!over_) {
      const int seen = cases_;
      if (!changed_.wait_for(lock, kPatience, [&] { return cases_ != seen; })) std::abort();
    }
  }

  static inline struct sigaction previous_[NSIG];
  static inline char name_[256];
  std::mutex mutex_;
  std::condition_variable changed_;
  int cases_ = 0;
  bool over_ = false;
  std::thread thread_;
};

}  // namespace qvn::test
