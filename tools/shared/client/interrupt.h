// SIGINT, SIGTERM and SIGHUP (the terminal is gone) as a request that the command sees and carries out in its
// own time. The second signal of a kind ends the process at once, as it would without this.
#pragma once

#include <functional>
#include <memory>
#include <thread>

namespace qvn::cli {

class Interrupt {
 public:
  // From here on the signals are requests.
  static void install();

  static bool requested();

  // Waits until `descriptor` (none when negative) can be read, a request comes in, or the time is up; true
  // when the descriptor can be read.
  static bool waitReadable(int descriptor, int timeoutMilliseconds);
};

// Runs an action on a thread of its own, once, when a request comes in during this object's life.
class OnInterrupt {
 public:
  explicit OnInterrupt(std::function<void()> action);
  // Waits for an action that runs.
  ~OnInterrupt();
  OnInterrupt(const OnInterrupt&) = delete;
  OnInterrupt& operator=(const OnInterrupt&) = delete;

  // If a request has come in: returns when the action has been carried out.
  void settle();

 private:
  int released_;  // an event descriptor; readable once this object goes
  std::thread thread_;
};

}  // namespace qvn::cli
