// Exports the device by USB/IP, to any number of hosts at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "base/bytes.h"
#include "base/connection_id.h"
#include "net/event_loop.h"
#include "net/message_hosts.h"
#include "usb/device.h"
#include "usb/usbip_assembler.h"
#include "usb/usbip_messages.h"

namespace sim::usb {

class UsbipServer {
 public:
  UsbipServer(EventLoop& loop, Device& device);

  // Until then nobody can connect.
  void listen(const std::string& address, std::uint16_t port) { hosts_.listen(address, port); }

  // 0 when it does not listen.
  std::uint16_t port() const { return hosts_.port(); }

  // Takes in what hosts have sent since the loop last looked.
  void readArrived() { hosts_.readArrived(); }

 private:
  struct Host {
    Bytes waiting;                  // to be sent
    std::size_t transfers = 0;      // that have not ended
    std::size_t transferBytes = 0;  // of these
  };

  void handle(ConnectionId id, const Bytes& message);
  void answer(ConnectionId id, const usbip::Question& question);
  void submit(ConnectionId id, const usbip::Command& command);
  void unlink(ConnectionId id, const usbip::Command& command);
  void ended(const Transfer& transfer);
  // It counts no more among those that have not ended.
  void release(const Transfer& transfer);
  void closing(ConnectionId id);
  void closeAll();
  void send(ConnectionId id, ByteView bytes);
  void flush(ConnectionId id);

  EventLoop& loop_;
  Device& device_;
  MessageHosts<UsbipAssembler, Host> hosts_;
};

}  // namespace sim::usb
