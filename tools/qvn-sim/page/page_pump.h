// Sends what waits for each host of a scan port: replies, and between them the blocks of its page.
#pragma once

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <utility>

#include "base/bytes.h"
#include "base/connection_id.h"
#include "net/event_loop.h"
#include "net/sockets.h"
#include "page/page_sender.h"

namespace sim {

// What a port keeps of each host for its pump.
struct PageOutput {
  EventLoop::Clock::time_point earliestReply;
  Bytes replies;                   // whole ones, but for the first; they go between two blocks of a page
  std::optional<PageSender> page;  // absent while a page waits for its delayed beginning or status
  bool isDeaf = false;             // has not read for too long
  bool stepPending = false;        // of a page that is sent slowly
};

// `Hosts` is a MessageHosts whose state is a PageOutput.
template <typename Hosts>
class PagePump {
 public:
  struct Handlers {
    // The page is over and still there. May queue, and begin the next one.
    std::function<void(ConnectionId)> onPageOver;
    // Faults that are told in the middle of a page. May queue.
    std::function<void(ConnectionId)> onStatusDue;
    std::function<void(ConnectionId)> onReadError;
  };

  PagePump(EventLoop& loop, Hosts& hosts, Handlers handlers)
      : loop_(loop), hosts_(hosts), handlers_(std::move(handlers)) {}

  // Adds to what waits to be sent, for the next pump; there, a host that does not read loses its connection.
  // Whether the host is still connected.
  bool queue(ConnectionId id, ByteView bytes) {
    auto* const host = hosts_.find(id);
    if (host == nullptr) return false;
    host->isDeaf = host->isDeaf || host->replies.size() + bytes.size() > kMostReplies;
    if (!host->isDeaf) host->replies.insert(host->replies.end(), bytes.begin(), bytes.end());
    return true;
  }

  // Later replies wait behind one that comes `delay` late.
  void delayReplies(ConnectionId id, std::chrono::milliseconds delay) {
    auto& earliest = hosts_.at(id).earliestReply;
    earliest = std::max(EventLoop::Clock::now(), earliest) + delay;
  }

  // Sends what the socket takes, and comes again when it takes more. May close the host.
  void pump(ConnectionId id) {
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
    wake(id);
  }

  // Pumps as soon as the loop comes to it: for those who must not lose the host meanwhile.
  void wake(ConnectionId id) {
    if (auto* const host = hosts_.find(id)) {
      loop_.watchWritable(host->socket.get(), [this, id] { pump(id); });
    }
  }

 private:
  // What one turn sends at most, so that an abort is never kept waiting by a fast host.
  static constexpr std::size_t kBytesPerTurn = std::size_t{1} << 20;
  // A host that has left so many bytes of replies unread does not read any more.
  static constexpr std::size_t kMostReplies = std::size_t{1} << 20;
  // A slow device looks so often whether it may send more.
  static constexpr std::chrono::milliseconds kSlowStep{10};

  // What to send next; nothing when there is nothing now, or no connection any more.
  ByteView nextBytes(ConnectionId id) {
    for (;;) {
      auto* const host = hosts_.find(id);
      if (host == nullptr) return {};
      if (host->isDeaf) {
        hosts_.close(id);
        return {};
      }
      if (!host->replies.empty() && (!host->page || host->page->isBetweenBlocks())) {
        return host->replies;
      }
      if (!host->page) return {};
      switch (host->page->next()) {
        case PageSender::Next::Send:
          return host->page->bytes();
        case PageSender::Next::Status:
          if (handlers_.onStatusDue) handlers_.onStatusDue(id);
          break;
        case PageSender::Next::ReadError:
          if (handlers_.onReadError) handlers_.onReadError(id);
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
          handlers_.onPageOver(id);
          break;
      }
    }
  }

  void waitForRate(ConnectionId id) {
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

  EventLoop& loop_;
  Hosts& hosts_;
  const Handlers handlers_;
};

}  // namespace sim
