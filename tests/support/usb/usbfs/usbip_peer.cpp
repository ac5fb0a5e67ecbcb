#include "usbfs/usbip_peer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

namespace qvn::usbfs {

namespace {

bool sendAll(int socket, iovec* parts, std::size_t count) {
  while (count > 0) {
    msghdr message = {};
    message.msg_iov = parts;
    message.msg_iovlen = count;
    ssize_t sent = sendmsg(socket, &message, MSG_NOSIGNAL);
    if (sent < 0 && errno == EINTR) continue;
    if (sent <= 0) return false;
    for (; count > 0 && static_cast<std::size_t>(sent) >= parts->iov_len; ++parts, --count) {
      sent -= static_cast<ssize_t>(parts->iov_len);
    }
    if (count > 0) {
      parts->iov_base = static_cast<char*>(parts->iov_base) + sent;
      parts->iov_len -= static_cast<std::size_t>(sent);
    }
  }
  return true;
}

bool receiveAll(int socket, void* to, std::size_t size) {
  auto* at = static_cast<char*>(to);
  while (size > 0) {
    const ssize_t got = recv(socket, at, size, 0);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    at += got;
    size -= static_cast<std::size_t>(got);
  }
  return true;
}

int connectTo(const std::string& address, std::uint16_t port) {
  sockaddr_in where = {};
  where.sin_family = AF_INET;
  where.sin_port = htons(port);
  if (inet_pton(AF_INET, address.c_str(), &where.sin_addr) != 1) return -1;
  const int connection = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (connection < 0) return -1;
  const int on = 1;
  setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  if (connect(connection, reinterpret_cast<const sockaddr*>(&where), sizeof where) == 0) return connection;
  close(connection);
  return -1;
}

// Its number on the wire, or 0, which is none.
std::uint32_t importOver(int connection, const std::string& busId) {
  usbip::ImportRequest request{{usbip::kVersion, usbip::kRequestImport, 0}, {}};
  busId.copy(request.busId, sizeof request.busId - 1);
  iovec part{&request, sizeof request};
  usbip::Operation reply;
  if (!sendAll(connection, &part, 1) || !receiveAll(connection, &reply, sizeof reply)) return 0;
  if (reply.version != usbip::kVersion || reply.code != usbip::kReplyImport || reply.status != 0) return 0;
  usbip::ImportedDevice device;
  if (!receiveAll(connection, &device, sizeof device)) return 0;
  return device.bus << 16 | device.device;
}

// Signals are for the threads of the program.
std::thread quietThread(auto&& body) {
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  std::thread thread(body);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  return thread;
}

}  // namespace

std::unique_ptr<Peer> UsbIpPeer::import(const std::string& address, std::uint16_t port,
                                        const std::string& busId, const std::string& nodeFile, Host& host) {
  const int connection = connectTo(address, port);
  if (connection < 0) return nullptr;
  const std::uint32_t device = importOver(connection, busId);
  const int watch = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
  // The file is open here, so its removal shows as one link less.
  if (device != 0 && inotify_add_watch(watch, nodeFile.c_str(), IN_ATTRIB) >= 0) {
    return std::unique_ptr<Peer>(new UsbIpPeer(connection, watch, nodeFile, device, host));
  }
  if (watch >= 0) close(watch);
  close(connection);
  return nullptr;
}

UsbIpPeer::UsbIpPeer(int socket, int watch, std::string nodeFile, std::uint32_t device, Host& host)
    : socket_(socket),
      watch_(watch),
      nodeFile_(std::move(nodeFile)),
      device_(device),
      host_(host),
      reader_(quietThread([this] { read(); })) {}

UsbIpPeer::~UsbIpPeer() {
  shutdown(socket_, SHUT_RDWR);
  reader_.join();
  close(socket_);
  close(watch_);
}

bool UsbIpPeer::send(const Sent& sent, usbip::Header header, const std::uint8_t* data, std::size_t length) {
  const std::lock_guard lock(mutex_);
  if (!connected_) return false;
  header.sequence = ++lastSequence_;
  header.device = device_;
  sent_[lastSequence_] = sent;
  iovec parts[] = {{&header, sizeof header}, {const_cast<std::uint8_t*>(data), length}};
  // The reader sees a connection that has ended, and completes what was sent.
  static_cast<void>(sendAll(socket_, parts, data == nullptr ? 1 : 2));
  return true;
}

void UsbIpPeer::submit(const Transfer& transfer) {
  usbip::Header header;
  header.command = usbip::kSubmit;
  header.direction = transfer.isIn() ? 1 : 0;
  header.endpoint = transfer.endpoint & 0x0F;
  header.first = (transfer.isIn() ? usbip::kDirectionInFlag : 0) |
                 (transfer.endsWithZeroPacket ? usbip::kZeroPacketFlag : 0);
  header.second = static_cast<std::uint32_t>(transfer.length);
  std::memcpy(header.setup, transfer.setup.data(), sizeof header.setup);
  if (!send({transfer.id, transfer.isIn(), false, transfer.length}, header, transfer.data,
            transfer.data == nullptr ? 0 : transfer.length)) {
    host_.complete(transfer.id, -ESHUTDOWN, nullptr, 0);
  }
}

void UsbIpPeer::unlink(std::uint32_t id) {
  usbip::Header header{};
  header.command = usbip::kUnlink;
  {
    const std::lock_guard lock(mutex_);
    for (const auto& [sequence, sent] : sent_) {
      if (sent.id == id && !sent.isUnlink) header.first = sequence;
    }
  }
  if (header.first != 0) send({id, false, true, 0}, header, nullptr, 0);
}

bool UsbIpPeer::awaitReply() const {
  pollfd entries[] = {{socket_, POLLIN, 0}, {watch_, POLLIN, 0}};
  for (;;) {
    if (poll(entries, 2, -1) < 0 && errno != EINTR) return false;
    if (entries[1].revents != 0) {
      char events[512];
      while (::read(watch_, events, sizeof events) > 0) {
      }
      if (access(nodeFile_.c_str(), F_OK) != 0) return false;
    }
    if (entries[0].revents != 0) return true;
  }
}

bool UsbIpPeer::readReply() {
  usbip::Header header;
  if (!receiveAll(socket_, &header, sizeof header)) return false;
  Sent sent{};
  {
    const std::lock_guard lock(mutex_);
    const auto found = sent_.find(header.sequence);
    if (found == sent_.end()) return false;
    sent = found->second;
  }
  const auto status = static_cast<std::int32_t>(static_cast<std::uint32_t>(header.first));
  if (sent.isUnlink) {
    if (header.command != usbip::kUnlinked) return false;
    // With status 0 it came too late, and the transfer has been answered.
    {
      const std::lock_guard lock(mutex_);
      std::erase_if(sent_, [&](const auto& entry) {
        return entry.first == header.sequence || (status != 0 && entry.second.id == sent.id);
      });
    }
    if (status != 0) host_.complete(sent.id, status, nullptr, 0);
    return true;
  }
  const std::size_t actual = header.second;
  if (header.command != usbip::kSubmitted || actual > sent.length) return false;
  if (sent.isIn) {
    if (received_.size() < actual) received_.resize(actual);
    if (!receiveAll(socket_, received_.data(), actual)) return false;
  }
  {
    const std::lock_guard lock(mutex_);
    sent_.erase(header.sequence);
  }
  host_.complete(sent.id, status, sent.isIn ? received_.data() : nullptr, actual);
  return true;
}

void UsbIpPeer::read() {
  while (awaitReply() && readReply()) {
  }
  std::map<std::uint32_t, Sent> left;
  {
    const std::lock_guard lock(mutex_);
    connected_ = false;
    left.swap(sent_);
  }
  for (const auto& [sequence, sent] : left) {
    if (!sent.isUnlink) host_.complete(sent.id, -ESHUTDOWN, nullptr, 0);
  }
  host_.disconnected();
}

}  // namespace qvn::usbfs
