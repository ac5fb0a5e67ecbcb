#include "hid/hid_port.h"

#include <sys/socket.h>

#include <cerrno>
#include <utility>
#include <vector>

#include "base/little_endian.h"
#include "hid/button_panel.h"

namespace sim {
namespace {

constexpr std::size_t kMaxHosts = 64;

constexpr std::size_t kMessageHeader = 3;
constexpr std::uint8_t kReport = 0x01;
constexpr std::uint8_t kEvent = 0x02;

constexpr std::size_t kBuffer = std::size_t{64} << 10;

// What one turn sends to a host at most, so that the other ports are never kept waiting.
constexpr std::size_t kBytesPerTurn = std::size_t{1} << 20;

// A host that has left so much unread does not read any more.
constexpr std::size_t kMostWaiting = std::size_t{4} << 20;

void appendMessage(Bytes& to, std::uint8_t type, ByteView content) {
  std::uint8_t length[2];
  writeLittle16(length, content.size());
  to.push_back(type);
  to.insert(to.end(), length, length + 2);
  to.insert(to.end(), content.begin(), content.end());
}

Bytes message(std::uint8_t type, ByteView content) {
  Bytes bytes;
  bytes.reserve(kMessageHeader + content.size());
  appendMessage(bytes, type, content);
  return bytes;
}

}  // namespace

HidPort::HidPort(EventLoop& loop)
    : loop_(loop), listener_(loop, [this](Descriptor socket) { connect(std::move(socket)); }) {}

void HidPort::sendReport(ByteView report) { sendToAll({message(kReport, report)}); }

void HidPort::sendEvent(ByteView event) { sendToAll({message(kEvent, event)}); }

void HidPort::sendNumberedReports(std::uint32_t count) { sendToAll({{}, 0, count}); }

void HidPort::connect(Descriptor socket) {
  if (hosts_.size() >= kMaxHosts) return;
  const HostId id = ++lastId_;
  loop_.watch(socket.get(), [this, id] { readFrom(id); });
  hosts_[id].socket = std::move(socket);
}

void HidPort::readFrom(HostId id) {
  const auto found = hosts_.find(id);
  if (found == hosts_.end()) return;
  char ignored[4096];
  const ssize_t got = recv(found->second.socket.get(), ignored, sizeof ignored, 0);
  if (got == 0 || (got < 0 && errno != EAGAIN && errno != EINTR)) close(id);
}

void HidPort::sendToAll(const Waiting& waiting) {
  listener_.acceptWaiting();  // a host whose connection is there gets what is sent from now on
  std::vector<HostId> ids;
  ids.reserve(hosts_.size());
  for (const auto& [id, host] : hosts_) ids.push_back(id);
  for (const HostId id : ids) {
    Host& host = hosts_.at(id);
    host.waitingBytes += waiting.bytes.size();
    if (host.waitingBytes > kMostWaiting) {
      close(id);
      continue;
    }
    host.waiting.push_back(waiting);
    pump(id);
  }
}

void HidPort::fillBuffer(Host& host) {
  while (!host.waiting.empty() && host.buffer.size() < kBuffer) {
    Waiting& next = host.waiting.front();
    host.buffer.insert(host.buffer.end(), next.bytes.begin(), next.bytes.end());
    host.waitingBytes -= next.bytes.size();
    next.bytes.clear();
    for (; next.nextNumber < next.endNumber && host.buffer.size() < kBuffer; ++next.nextNumber) {
      appendMessage(host.buffer, kReport, panel::numberedReport(next.nextNumber));
    }
    if (next.nextNumber == next.endNumber) host.waiting.pop_front();
  }
}

void HidPort::pump(HostId id) {
  const auto found = hosts_.find(id);
  if (found == hosts_.end()) return;
  Host& host = found->second;
  const int fd = host.socket.get();
  for (std::size_t sentNow = 0; sentNow < kBytesPerTurn;) {
    fillBuffer(host);
    if (host.buffer.empty()) {
      loop_.unwatchWritable(fd);
      return;
    }
    const ssize_t result = ::send(fd, host.buffer.data(), host.buffer.size(), MSG_NOSIGNAL);
    if (result < 0 && errno != EAGAIN && errno != EINTR) {
      close(id);
      return;
    }
    if (result <= 0) break;
    host.buffer.erase(host.buffer.begin(), host.buffer.begin() + result);
    sentNow += static_cast<std::size_t>(result);
  }
  loop_.watchWritable(fd, [this, id] { pump(id); });
}

void HidPort::close(HostId id) {
  const auto found = hosts_.find(id);
  if (found == hosts_.end()) return;
  loop_.unwatch(found->second.socket.get());
  hosts_.erase(found);
}

}  // namespace sim
