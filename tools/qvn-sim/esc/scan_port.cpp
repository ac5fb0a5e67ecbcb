#include "esc/scan_port.h"
#include "page/page_sender.h"
#include "page/page_stream.h"

#include <utility>

namespace sim {
namespace {

constexpr std::string_view kTraceName = "scan";

}  // namespace

ScanPort::ScanPort(EventLoop& loop, FaultSwitches& faults, Scanner& scanner, ScanEngine& engine,
                   PageSource& pages, Trace& trace)
    : loop_(loop),
      faults_(faults),
      scanner_(scanner),
      engine_(engine),
      pages_(pages),
      trace_(trace),
      hosts_(loop, {.onMessage = [this](ConnectionId id, const Bytes& command) { handle(id, command); },
                    .onClosing = [this](ConnectionId id) { closing(id); }}),
      pump_(loop, hosts_,
            {.onPageOver = [this](ConnectionId id) { endPage(id); },
             .onStatusDue = [this](ConnectionId id) { queue(id, scanner_.endOfPageStatus()); },
             .onReadError = nullptr}) {}

void ScanPort::handle(ConnectionId id, const Bytes& bytes) {
  trace_.received(id, bytes, kTraceName);
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
    engine_.endPage();
    return;
  }
  loop_.atOrNow(momentOfReply(id, esc::Command::Go), [this, id, number = engine_.pageNumber()] {
    if (engine_.isSendingTo(id) && engine_.pageNumber() == number) beginPage(id);
  });
}

void ScanPort::beginPage(ConnectionId id) {
  const auto number = engine_.pageNumber();
  const BlockFormat format{esc::kHeaderLength,
                           [number](std::uint8_t* to, std::size_t promised, std::uint64_t block) {
                             esc::writeScanDataHeader(to, promised, number, block);
                           }};
  hosts_.at(id).page.emplace(
      pages_.open(number, scanner_.settingsOf(id), format,
                  [this, id](ByteView header) { trace_.sent(id, header, kTraceName); }));
  pump_.pump(id);
}

void ScanPort::abort(ConnectionId id) {
  if (!engine_.isSendingTo(id) || faults_.strike(ScanFault::IgnoreAbort)) return;
  std::optional<PageSender>& page = hosts_.at(id).page;
  if (page) {
    page->abort();
    pump_.pump(id);
  } else {
    engine_.endPage();
    reply(id, esc::Command::Abort, esc::makeStatus(esc::Status::Aborted));
  }
}

void ScanPort::endPage(ConnectionId id) {
  std::optional<PageSender>& page = hosts_.at(id).page;
  const bool isAborted = page->isAborted();
  const bool hasToldStatus = page->hasToldStatus();
  pages_.close(*page);
  page.reset();
  if (isAborted) {
    engine_.endPage();
    reply(id, esc::Command::Abort, esc::makeStatus(esc::Status::Aborted));
    return;
  }
  if (hasToldStatus || faults_.strike(ScanFault::StatusNever)) {
    engine_.endPage();
  } else if (const auto delay = faults_.strike(ScanFault::StatusLate)) {
    loop_.after(std::chrono::milliseconds(*delay), [this, id, number = engine_.pageNumber()] {
      if (engine_.isSendingTo(id) && engine_.pageNumber() == number) sendStatusOfPage(id);
    });
  } else {
    sendStatusOfPage(id);
  }
}

void ScanPort::sendStatusOfPage(ConnectionId id) {
  engine_.endPage();
  const Bytes status = scanner_.endOfPageStatus();
  if (faults_.strike(ScanFault::StatusTwice)) queue(id, status);
  queue(id, status);
  pump_.pump(id);
}

void ScanPort::reply(ConnectionId id, esc::Command command, Bytes bytes) {
  if (faults_.strike(ReplyFault::Drop, command)) return;
  if (faults_.strike(ReplyFault::Double, command)) bytes.insert(bytes.end(), bytes.begin(), bytes.end());
  loop_.atOrNow(momentOfReply(id, command), [this, id, late = std::move(bytes)] {
    queue(id, late);
    pump_.pump(id);
  });
}

EventLoop::Clock::time_point ScanPort::momentOfReply(ConnectionId id, esc::Command command) {
  if (const auto delay = faults_.strike(ReplyFault::Delay, command)) pump_.delayReplies(id, *delay);
  return hosts_.at(id).earliestReply;
}

void ScanPort::queue(ConnectionId id, ByteView bytes) {
  if (pump_.queue(id, bytes)) trace_.sent(id, bytes, kTraceName);
}

void ScanPort::closing(ConnectionId id) {
  if (hosts_.at(id).page) pages_.discard();
  scanner_.connectionClosed(id);
}

}  // namespace sim
