#include "print/print_port.h"

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace sim {
namespace {

constexpr std::size_t kBufferSize = std::size_t{1} << 20;

// What one turn takes at most, so that the bidi port is never kept waiting by a fast host.
constexpr int kReadsPerTurn = 8;

// A slow device takes its data in steps of this length.
constexpr std::chrono::milliseconds kSlowStep{10};

// Nothing more comes of a job whose end was announced when nothing came for so long.
constexpr std::chrono::milliseconds kSilence{50};

// With a small receive buffer the host feels a slow device soon.
constexpr int kSlowReceiveBuffer = 16384;

}  // namespace

PrintPort::PrintPort(EventLoop& loop, FaultSwitches& faults, JobQueue& jobs, const std::string& address,
                     std::uint16_t port)
    : loop_(loop),
      faults_(faults),
      jobs_(jobs),
      listener_(listenTcp(address, port, faults.printBytesPerSecond() ? kSlowReceiveBuffer : 0)),
      buffer_(kBufferSize) {
  loop_.watch(listener_.get(), [this] { readArrived(); });
}

void PrintPort::readArrived() {
  for (int turn = 0; turn < kReadsPerTurn; ++turn) {
    if (!host_.socket.isOpen() && !takeNextHost()) {
      drained();
      return;
    }
    switch (readOnce()) {
      case ReadResult::Data:
        break;
      case ReadResult::Nothing:
        return;
      case ReadResult::Ended:
        closeConnection();
        jobs_.connectionEnded();
        break;
      case ReadResult::Broken:
        closeConnection();
        jobs_.connectionBroke();
        break;
    }
  }
}

void PrintPort::connect(Descriptor socket, std::shared_ptr<const bool> isBroken) {
  waiting_.push_back({std::move(socket), std::move(isBroken)});
  loop_.after(std::chrono::milliseconds(0), [this] { readArrived(); });
}

bool PrintPort::takeNextHost() {
  if (waiting_.empty()) {
    host_ = {acceptTcp(listener_), nullptr};
    if (!host_.socket.isOpen()) return false;
  } else {
    host_ = std::move(waiting_.front());
    waiting_.pop_front();
  }
  loop_.unwatch(listener_.get());
  loop_.watch(host_.socket.get(), [this] { readArrived(); });
  return true;
}

PrintPort::ReadResult PrintPort::readOnce() {
  const std::size_t room = allowance();
  if (room == 0) return ReadResult::Nothing;
  const ssize_t got = recv(host_.socket.get(), buffer_.data(), room, 0);
  if (got < 0 && (errno == EAGAIN || errno == EINTR)) {
    drained();
    return ReadResult::Nothing;
  }
  if (got <= 0) {
    const bool isBroken = host_.isBroken ? *host_.isBroken : got < 0;
    return isBroken ? ReadResult::Broken : ReadResult::Ended;
  }
  received_ += static_cast<std::uint64_t>(got);
  if (faults_.printBytesPerSecond()) allowed_ -= static_cast<std::uint64_t>(got);
  jobs_.receive(ByteView(buffer_.data(), static_cast<std::size_t>(got)));
  if (jobs_.currentBytes() > 0 && faults_.closesJobAt(jobs_.currentBytes())) {
    resetOnClose(host_.socket);
    return ReadResult::Broken;
  }
  return ReadResult::Data;
}

void PrintPort::closeConnection() {
  loop_.unwatch(host_.socket.get());
  host_.socket.close();
  // Also when this turn ends here: the next host must be heard.
  loop_.watch(listener_.get(), [this] { readArrived(); });
}

void PrintPort::drained() {
  if (!jobs_.endsInSilence()) {
    jobs_.drained();
    return;
  }
  // The rest of the job may still wait in the host's own buffers for room in ours.
  if (silencePending_) return;
  silencePending_ = true;
  loop_.after(kSilence, [this, before = received_] {
    silencePending_ = false;
    if (received_ == before && !stepPending_) {
      jobs_.drained();
    } else {
      drained();
    }
  });
}

std::size_t PrintPort::allowance() {
  const auto rate = faults_.printBytesPerSecond();
  if (!rate) return buffer_.size();
  if (allowed_ == 0) {
    loop_.unwatch(host_.socket.get());
    if (!stepPending_) {
      stepPending_ = true;
      loop_.after(kSlowStep, [this] {
        stepPending_ = false;
        const auto now = faults_.printBytesPerSecond();
        if (now) allowed_ = *now == 0 ? 0 : std::max<std::uint64_t>(1, *now * kSlowStep.count() / 1000);
        if (!host_.socket.isOpen()) return;
        loop_.watch(host_.socket.get(), [this] { readArrived(); });
        readArrived();
      });
    }
  }
  return static_cast<std::size_t>(std::min<std::uint64_t>(allowed_, buffer_.size()));
}

}  // namespace sim
