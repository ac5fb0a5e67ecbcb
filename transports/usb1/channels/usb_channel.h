// The way over an interface of a device.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "bus/in_pipe.h"
#include "bus/out_pipe.h"
#include "bus/usb_interface.h"
#include "shared/channel/channel.h"
#include "shared/channel/wake_up.h"

namespace qvn::usb1 {

// What the interface cannot do fails with 1: a HID is sent nothing, and who sends print data hears nothing.
class UsbChannel : public shared::Channel {
 public:
  // What comes from the device is for whoever has a channel that listens; there is one at a time.
  enum class Listens : bool { No, Yes };

  UsbChannel(UsbInterfaces::Use use, OutKind kind, Listens listens);
  ~UsbChannel() override;

  // Before all others: 0, or why there is no channel after all.
  std::uint32_t start();

  int readable() const override;
  bool keepQuiet(bool quiet) override;
  void wait(std::chrono::steady_clock::time_point deadline) override;
  void interrupt() override;
  std::uint32_t receive(std::span<std::uint8_t> room, std::size_t& received) override;
  std::uint32_t send(std::span<const std::uint8_t> bytes, std::uint32_t timeout, std::size_t& sent) override;
  // Resets the printer softly (printer class, SOFT_RESET). One that does not know that is left as it is.
  std::uint32_t flush() override;
  // Gives the interface back soon, whatever becomes of the channel.
  void shutDown() override;

 private:
  struct Pipes;
  class Pass;
  virtual std::uint32_t receiveFrom(InPipe& in, std::span<std::uint8_t> room, std::size_t& received) {
    return in.receive(room, received);
  }

  UsbBus& bus_;
  const std::shared_ptr<shared::WakeUp> raised_;
  bool hasEntered_ = false;
  mutable std::shared_ptr<Pipes> pipes_;
  // Who uses them, and once more until it is shut down.
  mutable std::atomic<unsigned> users_{1};
  std::atomic<bool> isShutDown_{false};
};

// Of a HID whose transfers are its reports: each is put into a frame as on a HID port.
class HidReportChannel : public UsbChannel {
 public:
  explicit HidReportChannel(UsbInterfaces::Use use)
      : UsbChannel(std::move(use), OutKind::Stream, Listens::Yes) {}

 private:
  std::uint32_t receiveFrom(InPipe& in, std::span<std::uint8_t> room, std::size_t& received) override;
};

}  // namespace qvn::usb1
