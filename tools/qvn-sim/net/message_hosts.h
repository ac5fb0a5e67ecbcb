// The hosts that are connected to a port, and the messages that each sends: NPA packets, ESC commands or
// blocks.
#pragma once

#include <sys/socket.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/bytes.h"
#include "base/connection_id.h"
#include "net/event_loop.h"
#include "net/sockets.h"
#include "net/tcp_listener.h"

namespace sim {

// `Assembler` cuts what arrives into messages; `State` is what the port keeps of each host besides.
template <typename Assembler, typename State>
class MessageHosts {
 public:
  struct Host : State {
    Descriptor socket;
    Assembler assembler;
    std::uint64_t arrivals = 0;  // to tell a stalled message from a slow one
  };
  struct Handlers {
    // Each whole message; may close the host.
    std::function<void(ConnectionId, const Bytes&)> onMessage;
    // The host is about to be forgotten.
    std::function<void(ConnectionId)> onClosing;
  };

  MessageHosts(EventLoop& loop, Handlers handlers)
      : loop_(loop),
        handlers_(std::move(handlers)),
        listener_(loop, [this](Descriptor socket) { connect(std::move(socket)); }) {}

  // Until then nobody can connect by TCP.
  void listen(const std::string& address, std::uint16_t port) { listener_.listen(address, port); }

  // Takes in a host that is connected otherwise; one too many sees its connection closed.
  void connect(Descriptor socket) {
    if (hosts_.size() >= kMaxHosts) return;
    const ConnectionId id = ++lastId_;
    loop_.watch(socket.get(), [this, id] { readFrom(id); });
    hosts_[id].socket = std::move(socket);
  }

  // 0 when it does not listen.
  std::uint16_t port() const { return listener_.port(); }

  // Takes in what hosts have sent since the loop last looked.
  void readArrived() {
    std::vector<ConnectionId> ids;
    for (const auto& [id, host] : hosts_) ids.push_back(id);
    for (const ConnectionId id : ids) readFrom(id);
  }

  // Null when the host is connected no more.
  Host* find(ConnectionId id) {
    const auto found = hosts_.find(id);
    return found == hosts_.end() ? nullptr : &found->second;
  }
  Host& at(ConnectionId id) { return hosts_.at(id); }
  const std::map<ConnectionId, Host>& all() const { return hosts_; }

  void close(ConnectionId id) {
    Host* const host = find(id);
    if (host == nullptr) return;
    loop_.unwatch(host->socket.get());
    handlers_.onClosing(id);
    hosts_.erase(id);
  }

 private:
  static constexpr std::size_t kMaxHosts = 64;
  // How long the rest of a message may take.
  static constexpr std::chrono::milliseconds kMessageTimeout{500};

  void readFrom(ConnectionId id) {
    Host* const host = find(id);
    if (host == nullptr) return;
    std::uint8_t buffer[65536];
    const ssize_t got = recv(host->socket.get(), buffer, sizeof buffer, 0);
    if (got < 0 && (errno == EAGAIN || errno == EINTR)) return;
    if (got <= 0) {
      close(id);
      return;
    }
    host->assembler.add(ByteView(buffer, static_cast<std::size_t>(got)));
    ++host->arrivals;
    handleMessages(id);
  }

  void handleMessages(ConnectionId id) {
    while (Host* const host = find(id)) {
      const std::optional<Bytes> message = host->assembler.next();
      if (!message) {
        if (host->assembler.isPartial()) watchPartial(id);
        return;
      }
      handlers_.onMessage(id, *message);
    }
  }

  void watchPartial(ConnectionId id) {
    loop_.after(kMessageTimeout, [this, id, arrivals = at(id).arrivals] {
      Host* const host = find(id);
      if (host == nullptr || host->arrivals != arrivals) return;
      host->assembler.giveUpPartial();
      handleMessages(id);
    });
  }

  EventLoop& loop_;
  const Handlers handlers_;
  TcpListener listener_;
  ConnectionId lastId_ = 0;
  std::map<ConnectionId, Host> hosts_;
};

}  // namespace sim
