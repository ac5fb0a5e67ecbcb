#include "channels/usb_channel.h"

#include <utility>

#include "base/transport_identity.h"
#include "base/usb_settings.h"
#include "qvn/result_codes.h"
#include "qvn/transport/log.h"
#include "shared/streams/hid_stream.h"

namespace qvn::usb1 {
namespace {

constexpr std::uint8_t kGetPortStatus = 1;
constexpr std::uint8_t kSoftReset = 2;

// Why a printer takes nothing, in words: the bits of its port status (printer class, as on the parallel
// port).
void logPortStatus(UsbInterface& interface) {
  constexpr std::uint8_t kPaperEmpty = 0x20;
  constexpr std::uint8_t kSelected = 0x10;
  constexpr std::uint8_t kNoError = 0x08;
  std::uint8_t status = 0;
  const auto result = interface.control(
      {request_type::kInterfaceClassIn, kGetPortStatus, 0, interface.function().interface}, {&status, 1});
  if (result.code != QRN_ERROR_SUCCESS || result.count != 1) return;
  std::string text = "the printer takes no data:";
  if ((status & kPaperEmpty) != 0) text += " paper empty";
  if ((status & kSelected) == 0) text += " not selected";
  if ((status & kNoError) == 0) text += " error";
  transportLog(kLogComponent, log_level::kError, text + " (port status " + std::to_string(status) + ")");
}

}  // namespace

UsbChannel::UsbChannel(UsbInterfaces::Use use, OutKind kind, Listens listens) : interface_(std::move(use)) {
  const Function& function = interface_->function();
  if (function.out) out_ = std::make_unique<OutSender>(*interface_, kind);
  if (listens == Listens::Yes && function.in) {
    in_ = std::make_unique<InPipe>(interface_->bus(), interface_->device(), function.in, !function.out,
                                   readSize());
  }
}

UsbChannel::~UsbChannel() = default;

std::uint32_t UsbChannel::start() { return in_ != nullptr ? in_->start() : std::uint32_t{QRN_ERROR_SUCCESS}; }

int UsbChannel::readable() const { return in_ != nullptr ? in_->readable() : -1; }

void UsbChannel::wait(std::chrono::steady_clock::time_point deadline) {
  if (in_ != nullptr) in_->wait(deadline);
}

void UsbChannel::interrupt() {
  if (in_ != nullptr) in_->interrupt();
}

std::uint32_t UsbChannel::receive(std::span<std::uint8_t> room, std::size_t& received) {
  received = 0;
  return in_ != nullptr ? in_->receive(room, received) : std::uint32_t{QRN_ERROR_INVALID_FUNCTION};
}

std::uint32_t UsbChannel::send(std::span<const std::uint8_t> bytes, std::uint32_t timeout,
                               std::size_t& sent) {
  sent = 0;
  if (out_ == nullptr) return QRN_ERROR_INVALID_FUNCTION;
  const std::uint32_t rc = out_->send(bytes, timeout, sent);
  if (rc == QRN_ERROR_TIMEOUT && in_ == nullptr) logPortStatus(*interface_);
  return rc;
}

std::uint32_t UsbChannel::flush() {
  const auto result = interface_->control(
      {request_type::kInterfaceClassOut, kSoftReset, 0, interface_->function().interface}, {});
  return result.code == QRN_ERROR_IO_DEVICE ? std::uint32_t{QRN_ERROR_SUCCESS} : result.code;
}

void UsbChannel::shutDown() {
  if (out_ != nullptr) out_->shutDown();
  if (in_ != nullptr) in_->shutDown();
}

std::uint32_t HidReportChannel::receive(std::span<std::uint8_t> room, std::size_t& received) {
  received = 0;
  if (room.size() <= shared::kHidFrameHeader) return QRN_ERROR_SUCCESS;
  std::size_t length = 0;
  const std::uint32_t rc = in()->receiveOne(room.subspan(shared::kHidFrameHeader), length);
  if (rc != QRN_ERROR_SUCCESS || length == 0) return rc;
  room[0] = shared::kHidReport;
  room[1] = static_cast<std::uint8_t>(length & 0xFF);
  room[2] = static_cast<std::uint8_t>(length >> 8 & 0xFF);
  received = shared::kHidFrameHeader + length;
  return QRN_ERROR_SUCCESS;
}

}  // namespace qvn::usb1
