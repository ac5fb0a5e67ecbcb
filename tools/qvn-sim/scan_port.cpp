#include "scan_port.h"

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <iostream>
#include <utility>

namespace sim {
namespace {

// A slow device looks so often whether it may send more.
constexpr std::chrono::milliseconds kSlowStep{10};

// What one turn sends at most, so that an abort is never kept waiting by a fast host.
constexpr std::size_t kBytesPerTurn = std::size_t{1} << 20;

// A host that has left so many bytes of replies unread does not read any more.
constexpr std::size_t kMostReplies = std::size_t{1} << 20;

constexpr std::string_view kTraceName = "scan";

}  // namespace

ScanPort::ScanPort(EventLoop& loop, FaultSwitches& faults, Scanner& scanner, Picture& picture,
                   PageStore& store, Trace& trace, std::size_t blockSize)
    : loop_(loop),
      faults_(faults),
      scanner_(scanner),
      picture_(picture),
      store_(store),
      trace_(trace),
      blockSize_(blockSize),
      hosts_(loop, trace, kTraceName,
             {.onMessage = [this](ConnectionId id, const Bytes& command) { handle(id, command); },
              .onClosing = [this](ConnectionId id) { closing(id); }}) {}

void ScanPort::handle(ConnectionId id, const Bytes& bytes) {
  const esc::Command command = esc::entryOf(bytes).command;
  if (faults_.strike(ReplyFault::Close, command)) {
    hosts_.close(id);
  } else if (command == esc::Command::Go) {
    go(id);
  } else if (command == esc::Command::Abort) {
    abort(id);
  } else if (auto answer = scanner_.answer(id, command, bytes)) {
    reply(id, command, std::move(*answer));
  }
}

void ScanPort::go(ConnectionId id) {
  const esc::Status status = scanner_.beginPage(id);
  if (status != esc::Status::Good) {
    reply(id, esc::Command::Go, esc::makeStatus(status));
    return;
  }
  if (faults_.strike(ReplyFault::Drop, esc::Command::Go)) {
    scanner_.endPage();
    return;
  }
  loop_.atOrNow(momentOfReply(hosts_.at(id), esc::Command::Go), [this, id, number = scanner_.pageNumber()] {
    if (scanner_.isSendingTo(id) && scanner_.pageNumber() == number) beginPage(id);
  });
}

void ScanPort::beginPage(ConnectionId id) {
  const ScanSettings& settings = scanner_.settingsOf(id);
  store_.open(scanner_.pageNumber(), settings);
  const PageSinks sinks{[this](ByteView line) { store_.write(line); },
                        [this, id](ByteView header) { trace_.sent(id, header, kTraceName); }};
  hosts_.at(id).page.emplace(
      PageStream(picture_, settings, static_cast<std::uint8_t>(scanner_.pageNumber() & 0xFF), blockSize_,
                 sinks),
      faults_);
  pump(id);
}

void ScanPort::abort(ConnectionId id) {
  if (!scanner_.isSendingTo(id) || faults_.strike(PageFault::IgnoreAbort)) return;
  std::optional<PageSender>& page = hosts_.at(id).page;
  if (page) {
    page->abort();
    pump(id);
  } else {
    scanner_.endPage();
    reply(id, esc::Command::Abort, esc::makeStatus(esc::Status::Aborted));
  }
}

void ScanPort::endPage(ConnectionId id) {
  std::optional<PageSender>& page = hosts_.at(id).page;
  const bool isAborted = page->isAborted();
  const bool hasToldStatus = page->hasToldStatus();
  page.reset();
  if (isAborted) {
    store_.discard();
    scanner_.endPage();
    reply(id, esc::Command::Abort, esc::makeStatus(esc::Status::Aborted));
    return;
  }
  const std::string error = store_.close();
  if (!error.empty()) std::cerr << "qvn-sim: " << error << '\n';
  if (hasToldStatus || faults_.strike(PageFault::StatusNever)) {
    scanner_.endPage();
  } else if (const auto delay = faults_.strike(PageFault::StatusLate)) {
    loop_.after(std::chrono::milliseconds(*delay), [this, id, number = scanner_.pageNumber()] {
      if (scanner_.isSendingTo(id) && scanner_.pageNumber() == number) sendStatusOfPage(id);
    });
  } else {
    sendStatusOfPage(id);
  }
}

void ScanPort::sendStatusOfPage(ConnectionId id) {
  scanner_.endPage();
  const Bytes status = scanner_.endOfPageStatus();
  if (faults_.strike(PageFault::StatusTwice)) queue(id, status);
  queue(id, status);
  pump(id);
}

void ScanPort::reply(ConnectionId id, esc::Command command, Bytes bytes) {
  if (faults_.strike(ReplyFault::Drop, command)) return;
  if (faults_.strike(ReplyFault::Double, command)) bytes.insert(bytes.end(), bytes.begin(), bytes.end());
  loop_.atOrNow(momentOfReply(hosts_.at(id), command), [this, id, late = std::move(bytes)] {
    queue(id, late);
    pump(id);
  });
}

EventLoop::Clock::time_point ScanPort::momentOfReply(Host& host, esc::Command command) {
  if (const auto delay = faults_.strike(ReplyFault::Delay, command)) {
    host.earliestReply = std::max(EventLoop::Clock::now(), host.earliestReply) + *delay;
  }
  return host.earliestReply;
}

void ScanPort::queue(ConnectionId id, ByteView bytes) {
  auto* const host = hosts_.find(id);
  if (host == nullptr) return;
  Bytes& replies = host->replies;
  if (replies.size() + bytes.size() > kMostReplies) {
    hosts_.close(id);
    return;
  }
  trace_.sent(id, bytes, kTraceName);
  replies.insert(replies.end(), bytes.begin(), bytes.end());
}

void ScanPort::pump(ConnectionId id) {
  for (std::size_t sentNow = 0; sentNow < kBytesPerTurn;) {
    const ByteView bytes = nextBytes(id);
    auto* const host = hosts_.find(id);
    if (host == nullptr) return;
    const int fd = host->socket.get();
    if (bytes.empty()) {
      loop_.unwatchWritable(fd);
      return;
    }
    const ssize_t result = ::send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (result < 0 && errno != EAGAIN && errno != EINTR) {
      hosts_.close(id);
      return;
    }
    const std::size_t sent = result < 0 ? 0 : static_cast<std::size_t>(result);
    if (bytes.data() == host->replies.data()) {
      host->replies.erase(host->replies.begin(), host->replies.begin() + static_cast<std::ptrdiff_t>(sent));
    } else {
      host->page->sent(sent);
    }
    if (sent < bytes.size()) break;
    sentNow += sent;
  }
  loop_.watchWritable(hosts_.at(id).socket.get(), [this, id] { pump(id); });
}

ByteView ScanPort::nextBytes(ConnectionId id) {
  for (;;) {
    auto* const host = hosts_.find(id);
    if (host == nullptr) return {};
    if (!host->replies.empty() && (!host->page || host->page->isBetweenBlocks())) {
      return host->replies;
    }
    if (!host->page) return {};
    switch (host->page->next()) {
      case PageSender::Next::Send:
        return host->page->bytes();
      case PageSender::Next::Status:
        queue(id, scanner_.endOfPageStatus());
        break;
      case PageSender::Next::Wait:
        waitForRate(id);
        return {};
      case PageSender::Next::Silence:
        return {};
      case PageSender::Next::Close:
        resetOnClose(host->socket);
        hosts_.close(id);
        return {};
      case PageSender::Next::Done:
        endPage(id);
        break;
    }
  }
}

void ScanPort::waitForRate(ConnectionId id) {
  bool& stepPending = hosts_.at(id).stepPending;
  if (stepPending) return;
  stepPending = true;
  loop_.after(kSlowStep, [this, id] {
    auto* const host = hosts_.find(id);
    if (host == nullptr) return;
    host->stepPending = false;
    pump(id);
  });
}

void ScanPort::closing(ConnectionId id) {
  if (hosts_.at(id).page) store_.discard();
  scanner_.connectionClosed(id);
}

}  // namespace sim
