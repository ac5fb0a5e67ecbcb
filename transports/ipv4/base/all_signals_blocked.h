// For the start of a thread, which inherits it: a client's signal handlers run on the client's threads.
#pragma once

#include <signal.h>

namespace qvn::ipv4 {

class AllSignalsBlocked {
 public:
  AllSignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &previous_);
  }
  ~AllSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &previous_, nullptr); }
  AllSignalsBlocked(const AllSignalsBlocked&) = delete;
  AllSignalsBlocked& operator=(const AllSignalsBlocked&) = delete;

 private:
  sigset_t previous_;
};

}  // namespace qvn::ipv4
