#include "print/bidi_port.h"
#include "net/sockets.h"

#include <sys/socket.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace sim {
namespace {

constexpr std::size_t kMisframeBy = 256;

bool isForTheDevice(ByteView packet) {
  return (packet[npa::kFlags] & (npa::kNotARequest | npa::kRejected)) == 0 &&
         (packet[npa::kCommand] & 0xF0) != 0xF0;
}

}  // namespace

BidiPort::BidiPort(EventLoop& loop, FaultSwitches& faults, Printer& printer, Trace& trace)
    : loop_(loop),
      faults_(faults),
      printer_(printer),
      trace_(trace),
      hosts_(loop, {.onMessage = [this](ConnectionId id, const Bytes& packet) { handle(id, packet); },
                    .onClosing = [this](ConnectionId id) { printer_.connectionClosed(id); }}) {}

template <typename Wants>
void BidiPort::sendTo(ByteView bytes, Wants&& wants) {
  std::vector<ConnectionId> hosts;
  for (const auto& [id, host] : hosts_.all()) {
    if (wants(id)) hosts.push_back(id);
  }
  for (const ConnectionId id : hosts) send(id, bytes);
}

void BidiPort::alert(ByteView packet) {
  sendTo(packet, [&](ConnectionId host) { return printer_.wantsAlert(host, packet); });
}

void BidiPort::jobStatus(ByteView packet) {
  sendTo(packet, [&](ConnectionId host) { return printer_.wantsJobStatus(host); });
}

void BidiPort::sendToAll(ByteView bytes) {
  sendTo(bytes, [](ConnectionId) { return true; });
}

void BidiPort::handle(ConnectionId id, const Bytes& packet) {
  trace_.received(id, packet);
  const std::optional<npa::Command> command = npa::commandOf(packet);
  if (!isForTheDevice(packet) && command != npa::Command::EnterNpaMode) return;
  if (faults_.strike(ReplyFault::Close, command)) {
    hosts_.close(id);
    return;
  }
  if (command == npa::Command::EnterNpaMode) return;  // the device speaks nothing else; no reply is expected
  const bool understood = command && packet.size() >= npa::entryOf(*command).shortest;
  if (!understood || faults_.strike(ReplyFault::Reject, command)) {
    reply(id, command, Printer::reject(packet));
  } else {
    reply(id, command, printer_.answer(id, *command, packet));
  }
}

void BidiPort::reply(ConnectionId id, std::optional<npa::Command> command, Bytes packet) {
  auto* const host = hosts_.find(id);
  if (host == nullptr || faults_.strike(ReplyFault::Drop, command)) return;
  if (faults_.strike(ReplyFault::Corrupt, command)) {
    std::for_each(packet.begin() + npa::kCommand, packet.end(),
                  [](std::uint8_t& byte) { byte = static_cast<std::uint8_t>(~byte); });
  }
  if (faults_.strike(ReplyFault::Misframe, command)) {
    npa::writeBig16(packet, 1, static_cast<std::uint16_t>(packet.size() - npa::kUncounted + kMisframeBy));
  }
  // Both at once: a host that asks again at the first one has the second one before it already.
  if (faults_.strike(ReplyFault::Double, command)) packet.insert(packet.end(), packet.begin(), packet.end());

  auto when = std::max(EventLoop::Clock::now(), host->earliestReply);
  if (const auto delay = faults_.strike(ReplyFault::Delay, command)) {
    when += *delay;
    host->earliestReply = when;
  }
  if (const auto delay = faults_.strike(ReplyFault::Late, command)) when += *delay;
  loop_.atOrNow(when, [this, id, late = std::move(packet)] { send(id, late); });
}

void BidiPort::send(ConnectionId id, ByteView bytes) {
  auto* const host = hosts_.find(id);
  if (host == nullptr) return;
  const ssize_t sent = ::send(host->socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
  if (sent == static_cast<ssize_t>(bytes.size())) {
    trace_.sent(id, bytes);
  } else {
    hosts_.close(id);  // gone, or it has not read for so long that the system buffers are full
  }
}

}  // namespace sim
