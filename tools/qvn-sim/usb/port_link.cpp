#include "usb/port_link.h"

#include <sys/socket.h>

#include <cerrno>
#include <utility>

namespace sim::usb {
namespace {

// No message is longer than the system's buffer of a socket.
constexpr std::size_t kLongestMessage = std::size_t{256} << 10;
constexpr std::size_t kReadAhead = std::size_t{64} << 10;

// For more than an endpoint ever keeps of what it has taken.
constexpr int kRoomForTheLast = 256 << 10;

}  // namespace

PortLink::PortLink(EventLoop& loop, std::function<void(Descriptor)> connect, Kind kind, int ahead)
    : loop_(loop), connect_(std::move(connect)), kind_(kind), ahead_(ahead) {}

void PortLink::open() {
  if (isOpen()) return;
  auto [ours, theirs] = socketPair(kind_ == Kind::Messages);
  if (ahead_ > 0) setsockopt(ours.get(), SOL_SOCKET, SO_SNDBUF, &ahead_, sizeof ahead_);
  socket_ = std::move(ours);
  connect_(std::move(theirs));
}

void PortLink::close() {
  if (!isOpen()) return;
  loop_.unwatch(socket_.get());
  socket_.close();
  waitsToSend_ = waitsToReceive_ = false;
}

void PortLink::closeBehind(ByteView last) {
  if (!last.empty()) {
    open();
    setsockopt(socket_.get(), SOL_SOCKET, SO_SNDBUF, &kRoomForTheLast, sizeof kRoomForTheLast);
    ::send(socket_.get(), last.data(), last.size(), MSG_NOSIGNAL);  // a port that has ended misses nothing
  }
  close();
}

std::optional<std::size_t> PortLink::send(ByteView bytes) {
  open();
  const ssize_t sent = ::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
  if (sent < 0 && errno != EAGAIN && errno != EINTR) {
    close();
    return std::nullopt;
  }
  const std::size_t count = sent < 0 ? 0 : static_cast<std::size_t>(sent);
  waitsToSend_ = count < bytes.size();
  watch();
  return count;
}

std::optional<bool> PortLink::receive(Bytes& to) {
  open();
  const std::size_t before = to.size();
  const std::size_t room = kind_ == Kind::Messages ? kLongestMessage : kReadAhead;
  to.resize(before + room);
  const ssize_t got = recv(socket_.get(), to.data() + before, room, 0);
  to.resize(before + (got > 0 ? static_cast<std::size_t>(got) : 0));
  if (got > 0) return true;
  if (got == 0 || (errno != EAGAIN && errno != EINTR)) {
    close();
    return std::nullopt;
  }
  waitsToReceive_ = true;
  watch();
  return false;
}

void PortLink::watch() {
  const int fd = socket_.get();
  if (!waitsToSend_ && !waitsToReceive_) {
    loop_.unwatch(fd);
    return;
  }
  const auto once = [this](bool PortLink::*waits, const EventLoop::Handler Handlers::*handler) {
    if (!(this->*waits)) return EventLoop::Handler();
    return EventLoop::Handler([this, waits, handler] {
      this->*waits = false;
      watch();
      (handlers_.*handler)();
    });
  };
  loop_.watch(fd, once(&PortLink::waitsToReceive_, &Handlers::onReadable));
  loop_.watchWritable(fd, once(&PortLink::waitsToSend_, &Handlers::onWritable));
}

}  // namespace sim::usb
