#include "shared/scan/page_pipe.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace qvn::scan {

namespace {

// Some blocks ahead of the reader; less where the system's limit is lower.
constexpr int kCapacity = 1 << 20;

// False when the time was up before one of them became ready.
bool waitForAny(std::span<pollfd> entries, int timeoutMilliseconds) {
  int ready = 0;
  do {
    ready = poll(entries.data(), entries.size(), timeoutMilliseconds);
  } while (ready < 0 && errno == EINTR);
  return ready != 0;
}

}  // namespace

PagePipe::PagePipe(const CancelSignal& cancel) : cancel_(cancel) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) {
    throw std::system_error(errno, std::generic_category(), "cannot make a pipe");
  }
  readEnd_ = ends[0];
  writeEnd_ = ends[1];
  fcntl(writeEnd_, F_SETPIPE_SZ, kCapacity);
}

PagePipe::~PagePipe() {
  end();
  close(readEnd_);
}

void PagePipe::put(std::span<const std::uint8_t> bytes) {
  while (!bytes.empty() && !cancel_.raised() && !left_.raised()) {
    const ssize_t written = write(writeEnd_, bytes.data(), bytes.size());
    if (written > 0) {
      bytes = bytes.subspan(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {
      pollfd entries[] = {
          {writeEnd_, POLLOUT, 0}, {cancel_.descriptor(), POLLIN, 0}, {left_.descriptor(), POLLIN, 0}};
      waitForAny(entries, -1);
    } else if (errno != EINTR) {
      throw std::system_error(errno, std::generic_category(), "cannot pass the page on");
    }
  }
}

void PagePipe::end() {
  if (writeEnd_ >= 0) {
    close(writeEnd_);
    writeEnd_ = -1;
  }
}

PagePipe::Taken PagePipe::take(std::span<std::uint8_t> buffer) {
  for (;;) {
    if (cancel_.raised()) return {State::Cancelled, 0};
    const ssize_t count = read(readEnd_, buffer.data(), buffer.size());
    if (count > 0) return {State::Some, static_cast<std::size_t>(count)};
    if (count == 0) return {State::End, 0};
    if (errno == EAGAIN) return {State::Nothing, 0};
    if (errno != EINTR) throw std::system_error(errno, std::generic_category(), "cannot read the page");
  }
}

bool PagePipe::wait(std::chrono::milliseconds limit) const {
  pollfd entries[] = {{readEnd_, POLLIN, 0}, {cancel_.descriptor(), POLLIN, 0}};
  return waitForAny(entries, static_cast<int>(limit.count()));
}

}  // namespace qvn::scan
