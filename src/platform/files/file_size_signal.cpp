#include "platform/files/file_size_signal.h"

#include <time.h>

namespace qvn::platform {
namespace {

sigset_t fileSizeSignal() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGXFSZ);
  return set;
}

}  // namespace

FileSizeSignalBlock::FileSizeSignalBlock() {
  const sigset_t blocked = fileSizeSignal();
  pthread_sigmask(SIG_BLOCK, &blocked, &previous_);
}

FileSizeSignalBlock::~FileSizeSignalBlock() {
  if (sigismember(&previous_, SIGXFSZ) == 0) {
    // The kernel sends the signal to the writing thread, so a pending one is this thread's own.
    const sigset_t blocked = fileSizeSignal();
    constexpr timespec kNow{};
    while (sigtimedwait(&blocked, nullptr, &kNow) == SIGXFSZ) {
    }
  }
  pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
}

}  // namespace qvn::platform
