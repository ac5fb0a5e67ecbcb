#include "shared/client/interrupt.h"

#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <system_error>

namespace qvn::cli {

namespace {

std::atomic<bool> request{false};
static_assert(std::atomic<bool>::is_always_lock_free);

// Readable from the request on; nobody reads it, so every waiter sees it.
int requestDescriptor = -1;

int makeEventDescriptor() {
  const int descriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (descriptor < 0) {
    throw std::system_error(errno, std::generic_category(), "cannot make an event descriptor");
  }
  return descriptor;
}

void raiseEvent(int descriptor) {
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = write(descriptor, &one, sizeof one);
}

void onSignal(int) {
  const int savedError = errno;
  request.store(true);
  raiseEvent(requestDescriptor);
  errno = savedError;
}

// True when the first of the two can be read.
bool pollTwo(int first, int second, int timeoutMilliseconds) {
  pollfd entries[] = {{first, POLLIN, 0}, {second, POLLIN, 0}};
  poll(entries, 2, timeoutMilliseconds);
  return entries[0].revents != 0;
}

}  // namespace

void Interrupt::install() {
  requestDescriptor = makeEventDescriptor();
  struct sigaction action = {};
  action.sa_handler = onSignal;
  action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction before = {};
    sigaction(signal, nullptr, &before);
    // As nohup leaves it: the command is to outlive its terminal.
    if (signal == SIGHUP && before.sa_handler == SIG_IGN) continue;
    sigaction(signal, &action, nullptr);
  }
}

bool Interrupt::requested() { return request.load(); }

bool Interrupt::waitReadable(int descriptor, int timeoutMilliseconds) {
  return pollTwo(descriptor, requestDescriptor, timeoutMilliseconds);
}

OnInterrupt::OnInterrupt(std::function<void()> action) : released_(makeEventDescriptor()) {
  thread_ = std::thread([this, action = std::move(action)] {
    while (!Interrupt::requested()) {
      if (pollTwo(released_, requestDescriptor, -1)) {
        break;
      }
    }
    if (Interrupt::requested()) {
      action();
    }
  });
}

OnInterrupt::~OnInterrupt() {
  raiseEvent(released_);
  if (thread_.joinable()) {
    thread_.join();
  }
  close(released_);
}

void OnInterrupt::settle() {
  if (Interrupt::requested() && thread_.joinable()) {
    thread_.join();
  }
}

}  // namespace qvn::cli
