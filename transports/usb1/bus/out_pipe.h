// The OUT endpoint of an interface: one transfer flies at a time, whoever has it sent. A second one behind a
// first that the device does not take would get past it, and leave a hole in a job that nobody sees.
//
// On a printer that speaks NPA, packets and print data take the same way. What is sent between two short
// packets of the bus is one unit, and one that is exactly an NPA packet is taken for one. So a packet is a
// unit by itself, and print data that could begin like one is not let do so.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <span>

#include "bus/transfer.h"

namespace qvn::usb1 {

class UsbInterface;

enum class OutKind : std::uint8_t {
  Stream,  // nothing else goes the same way
  Data,    // among NPA packets
  Packet,  // a call sends one, or the rest of one
};

// What all senders over an interface have in common.
class OutPipe {
 public:
  // The device begins anew: with a unit.
  void beginAnew() {
    const std::lock_guard<std::mutex> lock(mutex_);
    insideUnit_ = false;
  }

 private:
  friend class OutSender;

  std::mutex mutex_;  // guards what follows
  std::condition_variable changed_;
  bool isTaken_ = false;
  int waitingPackets_ = 0;   // which go before data
  bool insideUnit_ = false;  // of whoever has it: what comes next goes on with the unit
};

class OutSender {
 public:
  OutSender(UsbInterface& interface, OutKind kind);
  ~OutSender();

  // As of a channel (shared/channel/channel.h): 1460 when the device took nothing for the time-out, 64 when
  // it is gone, 1117 when it goes on to stall, 1236 after shutDown. One thread at a time.
  std::uint32_t send(std::span<const std::uint8_t> bytes, std::uint32_t timeout, std::size_t& sent);

  // Any thread.
  void shutDown();

 private:
  std::uint32_t sendPacket(std::span<const std::uint8_t> bytes, std::uint32_t timeout, std::size_t& sent);
  std::uint32_t sendAll(std::span<const std::uint8_t> bytes, std::uint32_t timeout, std::size_t& sent);
  std::uint32_t endUnit(std::uint32_t timeout);
  std::uint32_t takeTurn(std::uint32_t timeout);
  void giveTurn();

  UsbInterface& interface_;
  OutPipe& pipe_;
  const OutKind kind_;
  const std::size_t pieceSize_;
  Transfer transfer_;
  std::size_t packetLeft_ = 0;  // of a packet that was sent in part
  bool hasTurn_ = false;
  bool isShutDown_ = false;  // guarded by the pipe's lock
};

}  // namespace qvn::usb1
