// What a device sends on an IN endpoint: asked for all the time, and read when somebody wants it. While
// nobody does the device has to wait.
#pragma once

#include <libusb.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

#include "bus/usb_bus.h"
#include "descriptors/functions.h"
#include "shared/channel/wake_up.h"

namespace qvn::usb1 {

class InPipe {
 public:
  // `size` of one transfer is made a multiple of the packet size: a device may always send a whole packet.
  // `raised` is readable while there is something to receive, or the end.
  InPipe(UsbBus& bus, libusb_device_handle* device, const Pipe& pipe, bool isInterrupt, std::size_t size,
         std::shared_ptr<shared::WakeUp> raised);
  InPipe(const InPipe&) = delete;
  InPipe& operator=(const InPipe&) = delete;
  // Waits until nothing flies any more.
  ~InPipe();

  // Before all others: 0, or why nothing can be asked for.
  std::uint32_t start();

  // As of a channel (shared/channel/channel.h): 64 when the device is gone or stalls after it has sent
  // something, 13 when it sent more than fits into its packets, 1117 when it goes on to stall, 1236 when it
  // was ended here.
  void keepQuiet(bool quiet);
  void wait(UsbBus::Clock::time_point deadline);
  void interrupt();
  std::uint32_t receive(std::span<std::uint8_t> room, std::size_t& received) {
    return receive(room, received, kSlots);
  }
  void shutDown();

  // The same, one transfer at a time. Room for a whole one is needed.
  std::uint32_t receiveOne(std::span<std::uint8_t> room, std::size_t& received) {
    return receive(room, received, 1);
  }

 private:
  struct Slot {
    InPipe* pipe = nullptr;
    libusb_transfer* transfer = nullptr;
    std::vector<std::uint8_t> buffer;
  };
  static constexpr std::size_t kSlots = 4;

  static void LIBUSB_CALL onEnd(libusb_transfer* transfer);
  void endedTransfer(Slot& slot);

  // At most so many transfers.
  std::uint32_t receive(std::span<std::uint8_t> room, std::size_t& received, std::size_t most);

  void endLocked(std::uint32_t code);
  void submitLocked(Slot& slot);
  // Takes the front of what has come off; false when there is nothing.
  bool takeLocked(std::span<std::uint8_t> room, std::size_t& received);
  void tellLocked();
  bool clearStall(std::unique_lock<std::mutex>& lock);

  UsbBus& bus_;
  libusb_device_handle* const device_;
  const Pipe pipe_;
  const std::shared_ptr<shared::WakeUp> raised_;
  std::array<Slot, kSlots> slots_;

  std::mutex mutex_;  // guards what follows
  std::deque<Slot*> come_;
  std::size_t taken_ = 0;  // of the first of these
  std::size_t flying_ = 0;
  std::vector<Slot*> stalled_;
  int stalls_ = 0;
  bool hasSent_ = false;
  std::uint32_t endedBy_ = 0;
  bool isQuiet_ = false;
  bool isRaised_ = false;
  std::atomic<bool> isInterrupted_{false};  // without the lock
  int arrived_ = 0;                         // something to take, or the end, or an interrupt
  int landed_ = 0;                          // once it has ended: nothing flies any more
};

}  // namespace qvn::usb1
