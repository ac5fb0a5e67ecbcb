#include "platform/threads/all_signals_blocked.h"

#include <signal.h>

namespace qvn::platform {

struct AllSignalsBlocked::Mask {
  sigset_t signals;
};

AllSignalsBlocked::AllSignalsBlocked() : previous_(std::make_unique<Mask>()) {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &previous_->signals);
}

AllSignalsBlocked::~AllSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &previous_->signals, nullptr); }

}  // namespace qvn::platform
