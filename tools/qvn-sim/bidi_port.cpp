#include "bidi_port.h"

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <utility>
#include <vector>

namespace sim {
namespace {

constexpr std::size_t kMaxConnections = 64;

// How long the rest of a packet may take.
constexpr std::chrono::milliseconds kPacketTimeout{500};

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
      listener_(loop, [this](Descriptor socket) { connected(std::move(socket)); }) {}

template <typename Wants>
void BidiPort::sendTo(ByteView bytes, Wants&& wants) {
  std::vector<ConnectionId> hosts;
  for (const auto& [id, connection] : connections_) {
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

void BidiPort::connected(Descriptor socket) {
  if (connections_.size() >= kMaxConnections) return;
  const ConnectionId id = ++lastId_;
  loop_.watch(socket.get(), [this, id] { readFrom(id); });
  connections_[id].socket = std::move(socket);
}

void BidiPort::readFrom(ConnectionId id) {
  Connection& connection = connections_.at(id);
  std::uint8_t buffer[4096];
  const ssize_t got = recv(connection.socket.get(), buffer, sizeof buffer, 0);
  if (got < 0 && (errno == EAGAIN || errno == EINTR)) return;
  if (got <= 0) {
    close(id);
    return;
  }
  connection.assembler.add(ByteView(buffer, static_cast<std::size_t>(got)));
  ++connection.partialSince;
  handlePackets(id);
}

void BidiPort::handlePackets(ConnectionId id) {
  auto found = connections_.find(id);
  while (found != connections_.end()) {
    const std::optional<Bytes> packet = found->second.assembler.next();
    if (!packet) {
      if (found->second.assembler.isPartial()) watchPartial(id);
      return;
    }
    trace_.received(id, *packet);
    handle(id, *packet);
    found = connections_.find(id);  // a fault may have closed it
  }
}

void BidiPort::watchPartial(ConnectionId id) {
  loop_.after(kPacketTimeout, [this, id, since = connections_.at(id).partialSince] {
    const auto found = connections_.find(id);
    if (found == connections_.end() || found->second.partialSince != since) return;
    found->second.assembler.giveUpPartial();
    handlePackets(id);
  });
}

void BidiPort::handle(ConnectionId id, const Bytes& packet) {
  const std::optional<npa::Command> command = npa::commandOf(packet);
  if (!isForTheDevice(packet) && command != npa::Command::EnterNpaMode) return;
  if (faults_.strike(ReplyFault::Close, command)) {
    close(id);
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
  const auto found = connections_.find(id);
  if (found == connections_.end() || faults_.strike(ReplyFault::Drop, command)) return;
  if (faults_.strike(ReplyFault::Corrupt, command)) {
    std::for_each(packet.begin() + npa::kCommand, packet.end(),
                  [](std::uint8_t& byte) { byte = static_cast<std::uint8_t>(~byte); });
  }
  if (faults_.strike(ReplyFault::Misframe, command)) {
    npa::writeBig16(packet, 1, static_cast<std::uint16_t>(packet.size() - npa::kUncounted + kMisframeBy));
  }
  if (faults_.strike(ReplyFault::Double, command)) packet.insert(packet.end(), packet.begin(), packet.end());

  const auto now = EventLoop::Clock::now();
  auto when = std::max(now, found->second.earliestReply);
  if (const auto delay = faults_.strike(ReplyFault::Delay, command)) {
    when += *delay;
    found->second.earliestReply = when;
  }
  if (const auto delay = faults_.strike(ReplyFault::Late, command)) when += *delay;
  if (when <= now) {
    send(id, packet);
  } else {
    loop_.at(when, [this, id, late = std::move(packet)] { send(id, late); });
  }
}

void BidiPort::send(ConnectionId id, ByteView bytes) {
  const auto found = connections_.find(id);
  if (found == connections_.end()) return;
  const ssize_t sent = ::send(found->second.socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
  if (sent == static_cast<ssize_t>(bytes.size())) {
    trace_.sent(id, bytes);
  } else {
    close(id);  // gone, or it has not read for so long that the system buffers are full
  }
}

void BidiPort::close(ConnectionId id) {
  const auto found = connections_.find(id);
  if (found == connections_.end()) return;
  loop_.unwatch(found->second.socket.get());
  connections_.erase(found);
  printer_.connectionClosed(id);
}

}  // namespace sim
