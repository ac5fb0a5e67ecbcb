// The device's inner connection from endpoints to a port: the port sees a host like any other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>

#include "base/bytes.h"
#include "net/event_loop.h"
#include "net/sockets.h"

namespace sim::usb {

class PortLink {
 public:
  enum class Kind : std::uint8_t {
    Stream,
    Messages,  // each one that is sent arrives by itself
  };
  struct Handlers {
    // What did not go, or was not there, may be tried again.
    EventLoop::Handler onWritable;
    EventLoop::Handler onReadable;
  };

  // `connect` gives a port its end. `ahead` is about how many bytes are taken for a port that does not read;
  // 0 leaves it to the system.
  PortLink(EventLoop& loop, std::function<void(Descriptor)> connect, Kind kind, int ahead);
  PortLink(const PortLink&) = delete;
  PortLink& operator=(const PortLink&) = delete;
  ~PortLink() { close(); }

  void handle(Handlers handlers) { handlers_ = std::move(handlers); }

  bool isOpen() const { return socket_.isOpen(); }
  // Connects to the port unless that was done.
  void open();
  // The port sees the end of the connection, behind what was sent.
  void close();
  // The same, behind some last bytes, whether the port reads or not.
  void closeBehind(ByteView last);

  // How many of the bytes went; fewer than all when the port does not read, and nothing at all when it has
  // ended the connection, which is closed then. Opens.
  std::optional<std::size_t> send(ByteView bytes);
  // Appends what has come, a message or as much as there is; false when nothing has. Nothing at all when the
  // port has ended the connection, which is closed then. Opens.
  std::optional<bool> receive(Bytes& to);

 private:
  void watch();

  EventLoop& loop_;
  const std::function<void(Descriptor)> connect_;
  const Kind kind_;
  const int ahead_;
  Handlers handlers_;
  Descriptor socket_;
  bool waitsToSend_ = false;
  bool waitsToReceive_ = false;
};

}  // namespace sim::usb
