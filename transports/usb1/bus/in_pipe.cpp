#include "bus/in_pipe.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <new>
#include <utility>

#include "bus/libusb_code.h"
#include "qvn/result_codes.h"

namespace qvn::usb1 {
namespace {

// A device that stalls again and again without having sent anything will do so for ever.
constexpr int kMostStalls = 3;

}  // namespace

InPipe::InPipe(UsbBus& bus, libusb_device_handle* device, const Pipe& pipe, bool isInterrupt,
               std::size_t size, std::shared_ptr<shared::WakeUp> raised)
    : bus_(bus), device_(device), pipe_(pipe), raised_(std::move(raised)) {
  size = std::max<std::size_t>(size / pipe.packetSize, 1) * pipe.packetSize;
  for (Slot& slot : slots_) {
    slot.pipe = this;
    slot.buffer.resize(size);
    slot.transfer = libusb_alloc_transfer(0);
    if (slot.transfer == nullptr) throw std::bad_alloc();
    const auto fill = isInterrupt ? libusb_fill_interrupt_transfer : libusb_fill_bulk_transfer;
    fill(slot.transfer, device, pipe.address, slot.buffer.data(), static_cast<int>(size), onEnd, &slot, 0);
  }
}

InPipe::~InPipe() {
  shutDown();
  bus_.waitFor(landed_);
  { const std::lock_guard<std::mutex> theCallbackHasReturned(mutex_); }
  for (Slot& slot : slots_) libusb_free_transfer(slot.transfer);
}

std::uint32_t InPipe::start() {
  const std::lock_guard<std::mutex> lock(mutex_);
  for (Slot& slot : slots_) submitLocked(slot);
  return endedBy_;
}

void InPipe::keepQuiet(bool quiet) {
  const std::lock_guard<std::mutex> lock(mutex_);
  isQuiet_ = quiet;
  tellLocked();
}

void InPipe::wait(UsbBus::Clock::time_point deadline) {
  bus_.waitFor(arrived_, deadline);
  if (!isInterrupted_.exchange(false)) return;
  const std::lock_guard<std::mutex> lock(mutex_);
  tellLocked();
}

void InPipe::interrupt() {
  isInterrupted_ = true;
  bus_.finishFromOutside(arrived_);
}

std::uint32_t InPipe::receive(std::span<std::uint8_t> room, std::size_t& received, std::size_t most) {
  received = 0;
  if (!UsbBus::isFinished(arrived_)) return QRN_ERROR_SUCCESS;
  std::unique_lock<std::mutex> lock(mutex_);
  do {
    std::size_t part = 0;
    for (std::size_t taken = 0; taken < most && !room.empty() && takeLocked(room, part); ++taken) {
      received += part;
      room = room.subspan(part);
    }
  } while (received == 0 && !stalled_.empty() && clearStall(lock));
  tellLocked();
  return received == 0 && come_.empty() ? endedBy_ : std::uint32_t{QRN_ERROR_SUCCESS};
}

void InPipe::shutDown() {
  const std::lock_guard<std::mutex> lock(mutex_);
  endLocked(QRN_ERROR_CONNECTION_ABORTED);
  tellLocked();
}

void InPipe::endLocked(std::uint32_t code) {
  if (endedBy_ != 0) return;
  endedBy_ = code;
  for (Slot& slot : slots_)
    libusb_cancel_transfer(slot.transfer);  // of no consequence to one that does not fly
  if (flying_ == 0) UsbBus::finish(landed_);
}

void InPipe::submitLocked(Slot& slot) {
  if (endedBy_ != 0) return;
  ++flying_;
  if (const int error = libusb_submit_transfer(slot.transfer); error != LIBUSB_SUCCESS) {
    --flying_;
    endLocked(error == LIBUSB_ERROR_NO_MEM ? codeFromError(error) : std::uint32_t{QRN_ERROR_NETNAME_DELETED});
  }
}

bool InPipe::takeLocked(std::span<std::uint8_t> room, std::size_t& received) {
  if (come_.empty()) return false;
  Slot& slot = *come_.front();
  const auto left =
      std::span(slot.buffer).first(static_cast<std::size_t>(slot.transfer->actual_length)).subspan(taken_);
  received = std::min(left.size(), room.size());
  std::memcpy(room.data(), left.data(), received);
  taken_ += received;
  if (received == left.size()) {
    come_.pop_front();
    taken_ = 0;
    submitLocked(slot);
  }
  return true;
}

bool InPipe::clearStall(std::unique_lock<std::mutex>& lock) {
  const std::vector<Slot*> stalled = std::exchange(stalled_, {});
  if (endedBy_ != 0) return false;
  if (++stalls_ > kMostStalls) {
    endLocked(QRN_ERROR_IO_DEVICE);
    return false;
  }
  lock.unlock();
  libusb_clear_halt(device_, pipe_.address);
  lock.lock();
  for (Slot* slot : stalled) submitLocked(*slot);
  return true;
}

void InPipe::tellLocked() {
  const bool hasCome = !come_.empty() || !stalled_.empty() || endedBy_ != 0;
  std::atomic_ref<int>(arrived_).store(hasCome || isInterrupted_ ? 1 : 0, std::memory_order_release);
  const bool isReadable = hasCome && !isQuiet_;
  if (isReadable == isRaised_) return;
  isRaised_ = isReadable;
  if (isReadable) {
    raised_->raise();
  } else {
    raised_->take();
  }
}

void InPipe::onEnd(libusb_transfer* transfer) {
  auto& slot = *static_cast<Slot*>(transfer->user_data);
  slot.pipe->endedTransfer(slot);
}

void InPipe::endedTransfer(Slot& slot) {
  const std::unique_lock<std::mutex> lock(mutex_);
  --flying_;
  const libusb_transfer_status status = slot.transfer->status;
  const bool isStall = status == LIBUSB_TRANSFER_STALL;
  if (slot.transfer->actual_length > 0) {
    hasSent_ = true;
    come_.push_back(&slot);
  } else if (isStall && !hasSent_) {
    stalled_.push_back(&slot);  // the halt of before
  } else if (status == LIBUSB_TRANSFER_COMPLETED) {
    submitLocked(slot);  // a packet without anything
  }
  if (isStall && hasSent_) {
    endLocked(QRN_ERROR_NETNAME_DELETED);  // it has broken off
  } else if (!isStall && status != LIBUSB_TRANSFER_COMPLETED) {
    endLocked(codeFromStatus(status));
  }
  tellLocked();
  if (endedBy_ != 0 && flying_ == 0) UsbBus::finish(landed_);
}

}  // namespace qvn::usb1
