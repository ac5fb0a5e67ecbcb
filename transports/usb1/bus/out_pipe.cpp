#include "bus/out_pipe.h"

#include <algorithm>
#include <chrono>

#include "base/usb_settings.h"
#include "bus/usb_interface.h"
#include "qvn/result_codes.h"
#include "shared/streams/npa_stream.h"

namespace qvn::usb1 {
namespace {

using std::chrono::milliseconds;

// For a send that is not to wait: what a device that takes something needs for that.
constexpr milliseconds kBriefly{20};

// A device that stalls again and again without taking anything will do so for ever.
constexpr int kMostStalls = 3;

UsbBus::Clock::time_point deadlineFor(std::uint32_t timeout) {
  return UsbBus::Clock::now() + (timeout != 0 ? milliseconds(timeout) : kBriefly);
}

}  // namespace

OutSender::OutSender(UsbInterface& interface, OutKind kind)
    : interface_(interface),
      pipe_(interface.outPipe()),
      kind_(kind),
      pieceSize_(std::max<std::size_t>(writeSize() / interface.function().out.packetSize, 1) *
                 interface.function().out.packetSize),
      transfer_(interface.bus()) {}

OutSender::~OutSender() { giveTurn(); }

std::uint32_t OutSender::send(std::span<const std::uint8_t> bytes, std::uint32_t timeout, std::size_t& sent) {
  sent = 0;
  if (kind_ == OutKind::Packet) return sendPacket(bytes, timeout, sent);
  while (sent < bytes.size()) {
    if (const std::uint32_t rc = takeTurn(timeout); rc != QRN_ERROR_SUCCESS) return rc;
    auto piece = bytes.subspan(sent, std::min(bytes.size() - sent, pieceSize_));
    if (kind_ == OutKind::Data && !pipe_.insideUnit_ && piece[0] == shared::kStartOfPacket)
      piece = piece.first(1);
    std::size_t taken = 0;
    const std::uint32_t rc = sendAll(piece, timeout, taken);
    giveTurn();
    sent += taken;
    if (rc != QRN_ERROR_SUCCESS) return rc;
  }
  return QRN_ERROR_SUCCESS;
}

void OutSender::shutDown() {
  {
    const std::lock_guard<std::mutex> lock(pipe_.mutex_);
    isShutDown_ = true;
    pipe_.changed_.notify_all();
  }
  transfer_.cancel();
}

// Keeps its turn until the whole packet has gone out.
std::uint32_t OutSender::sendPacket(std::span<const std::uint8_t> bytes, std::uint32_t timeout,
                                    std::size_t& sent) {
  std::uint32_t rc = QRN_ERROR_SUCCESS;
  if (packetLeft_ == 0) {
    rc = takeTurn(timeout);
    if (rc == QRN_ERROR_SUCCESS) rc = endUnit(timeout);
    if (rc != QRN_ERROR_SUCCESS) {
      giveTurn();
      return rc;
    }
    packetLeft_ = bytes.size();
  }
  rc = sendAll(bytes, timeout, sent);
  packetLeft_ -= sent;
  if (rc == QRN_ERROR_SUCCESS) rc = endUnit(timeout);
  if (packetLeft_ == 0) giveTurn();
  return rc;
}

// A transfer after another until all has gone out, as long as the device takes something.
std::uint32_t OutSender::sendAll(std::span<const std::uint8_t> bytes, std::uint32_t timeout,
                                 std::size_t& sent) {
  const Pipe& out = interface_.function().out;
  int stalls = 0;
  do {
    const auto piece = bytes.subspan(sent, std::min(bytes.size() - sent, pieceSize_));
    const Transfer::Result result =
        transfer_.send(interface_.device(), out.address, piece, deadlineFor(timeout));
    sent += result.count;
    if (result.count != 0) stalls = 0;
    if (result.count != 0 || piece.empty())
      pipe_.insideUnit_ = result.count != 0 && result.count % out.packetSize == 0;
    if (result.code == QRN_ERROR_IO_DEVICE && ++stalls <= kMostStalls) {
      libusb_clear_halt(interface_.device(), out.address);
    } else if (result.code == QRN_ERROR_TIMEOUT && result.count != 0 && timeout != 0) {
      continue;  // slow, but not stuck
    } else if (result.code != QRN_ERROR_SUCCESS) {
      return result.code;
    }
  } while (sent < bytes.size());
  return QRN_ERROR_SUCCESS;
}

std::uint32_t OutSender::endUnit(std::uint32_t timeout) {
  std::size_t nothing = 0;
  return pipe_.insideUnit_ ? sendAll({}, timeout, nothing) : std::uint32_t{QRN_ERROR_SUCCESS};
}

std::uint32_t OutSender::takeTurn(std::uint32_t timeout) {
  std::unique_lock<std::mutex> lock(pipe_.mutex_);
  const bool isPacket = kind_ == OutKind::Packet;
  const auto mayGo = [&] {
    return isShutDown_ || (!pipe_.isTaken_ && (isPacket || pipe_.waitingPackets_ == 0));
  };
  if (isPacket) ++pipe_.waitingPackets_;
  const bool isInTime = mayGo() || pipe_.changed_.wait_until(lock, deadlineFor(timeout), mayGo);
  if (isPacket) --pipe_.waitingPackets_;
  if (isShutDown_) return QRN_ERROR_CONNECTION_ABORTED;
  if (!isInTime) return QRN_ERROR_TIMEOUT;
  pipe_.isTaken_ = hasTurn_ = true;
  return QRN_ERROR_SUCCESS;
}

void OutSender::giveTurn() {
  if (!hasTurn_) return;
  const std::lock_guard<std::mutex> lock(pipe_.mutex_);
  pipe_.isTaken_ = hasTurn_ = false;
  pipe_.changed_.notify_all();
}

}  // namespace qvn::usb1
