// A device that a USB/IP server exports, imported over a connection of the opening's own.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "usbfs/peer.h"
#include "usbfs/usbip_wire.h"

namespace qvn::usbfs {

class UsbIpPeer final : public Peer {
 public:
  // None when the server is not there or does not give the device. The device counts as unplugged when the
  // server ends the connection, or `nodeFile` is removed.
  static std::unique_ptr<Peer> import(const std::string& address, std::uint16_t port,
                                      const std::string& busId, const std::string& nodeFile, Host& host);
  ~UsbIpPeer() override;
  UsbIpPeer(const UsbIpPeer&) = delete;
  UsbIpPeer& operator=(const UsbIpPeer&) = delete;

  void submit(const Transfer& transfer) override;
  void unlink(std::uint32_t id) override;

 private:
  struct Sent {
    std::uint32_t id;
    bool isIn;
    bool isUnlink;
    std::size_t length;
  };

  UsbIpPeer(int socket, int watch, std::string nodeFile, std::uint32_t device, Host& host);

  // Remembers what is asked and sends it; false when the connection has ended.
  bool send(const Sent& sent, usbip::Header header, const std::uint8_t* data, std::size_t length);
  void read();
  bool readReply();
  // Waits until the server has something to say; false when the node goes first.
  bool awaitReply() const;

  const int socket_;
  const int watch_;  // tells that something happened to the node's file
  const std::string nodeFile_;
  const std::uint32_t device_;
  Host& host_;

  std::mutex mutex_;  // guards what is sent, and these; the host is called without it
  bool connected_ = true;
  std::uint32_t lastSequence_ = 0;
  std::map<std::uint32_t, Sent> sent_;  // by sequence number, until it is answered
  Bytes received_;                      // the reader's own

  std::thread reader_;
};

}  // namespace qvn::usbfs
