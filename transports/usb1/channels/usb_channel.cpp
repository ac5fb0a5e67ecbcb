#include "channels/usb_channel.h"

#include <algorithm>
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

// What is over the interface: nothing of it flies any more at its end.
struct UsbChannel::Pipes {
  UsbInterfaces::Use interface;  // outlives what uses it
  std::unique_ptr<OutSender> out;
  std::unique_ptr<InPipe> in;
};

// Keeps them for the time of a call, unless the channel is shut down. The last one has them ended where
// nobody waits.
class UsbChannel::Pass {
 public:
  explicit Pass(const UsbChannel& channel) : channel_(channel) {
    unsigned users = channel_.users_;
    while (users != 0 && !channel_.users_.compare_exchange_weak(users, users + 1)) {
    }
    isIn_ = users != 0;
  }
  Pass(const Pass&) = delete;
  Pass& operator=(const Pass&) = delete;
  ~Pass() {
    if (isIn_ && --channel_.users_ == 0) channel_.bus_.dispose(std::move(channel_.pipes_));
  }

  explicit operator bool() const { return isIn_ && !channel_.isShutDown_; }
  Pipes* operator->() const { return channel_.pipes_.get(); }

 private:
  const UsbChannel& channel_;
  bool isIn_;
};

UsbChannel::UsbChannel(UsbInterfaces::Use use, OutKind kind, Listens listens)
    : bus_(use->bus()), raised_(std::make_shared<shared::WakeUp>()), pipes_(std::make_shared<Pipes>()) {
  const Function& function = use->function();
  if (function.out) pipes_->out = std::make_unique<OutSender>(*use, kind);
  if (listens == Listens::Yes && function.in) {
    // A report ends with its packet, which need not be a short one.
    const bool isHid = !function.out;
    const std::size_t size = isHid ? function.in.packetSize : readSize();
    pipes_->in = std::make_unique<InPipe>(bus_, use->device(), function.in, isHid, size, raised_);
  }
  pipes_->interface = std::move(use);
}

UsbChannel::~UsbChannel() {
  if (!isShutDown_ && hasEntered_) pipes_->interface->leave();
}

std::uint32_t UsbChannel::start() {
  std::uint32_t rc = pipes_->interface->enter();
  hasEntered_ = rc == QRN_ERROR_SUCCESS;
  if (rc != QRN_ERROR_SUCCESS || pipes_->in == nullptr) return rc;
  rc = raised_->open();
  return rc == QRN_ERROR_SUCCESS ? pipes_->in->start() : rc;
}

int UsbChannel::readable() const { return raised_->fd(); }

bool UsbChannel::keepQuiet(bool quiet) {
  if (const Pass pipes(*this); pipes && pipes->in != nullptr) pipes->in->keepQuiet(quiet);
  return true;
}

void UsbChannel::wait(std::chrono::steady_clock::time_point deadline) {
  if (const Pass pipes(*this); pipes && pipes->in != nullptr) pipes->in->wait(deadline);
}

void UsbChannel::interrupt() {
  if (const Pass pipes(*this); pipes && pipes->in != nullptr) pipes->in->interrupt();
}

std::uint32_t UsbChannel::receive(std::span<std::uint8_t> room, std::size_t& received) {
  received = 0;
  const Pass pipes(*this);
  if (!pipes) return QRN_ERROR_CONNECTION_ABORTED;
  return pipes->in != nullptr ? receiveFrom(*pipes->in, room, received)
                              : std::uint32_t{QRN_ERROR_INVALID_FUNCTION};
}

std::uint32_t UsbChannel::send(std::span<const std::uint8_t> bytes, std::uint32_t timeout,
                               std::size_t& sent) {
  sent = 0;
  const Pass pipes(*this);
  if (!pipes) return QRN_ERROR_CONNECTION_ABORTED;
  if (pipes->out == nullptr) return QRN_ERROR_INVALID_FUNCTION;
  const std::uint32_t rc = pipes->out->send(bytes, timeout, sent);
  if (rc == QRN_ERROR_TIMEOUT && pipes->in == nullptr) logPortStatus(*pipes->interface);
  return rc;
}

std::uint32_t UsbChannel::flush() {
  const Pass pipes(*this);
  if (!pipes) return QRN_ERROR_CONNECTION_ABORTED;
  UsbInterface& interface = *pipes->interface;
  const auto result = interface.control(
      {request_type::kInterfaceClassOut, kSoftReset, 0, interface.function().interface}, {});
  return result.code == QRN_ERROR_IO_DEVICE ? std::uint32_t{QRN_ERROR_SUCCESS} : result.code;
}

void UsbChannel::shutDown() {
  const Pass pipes(*this);
  if (!pipes || isShutDown_.exchange(true)) return;
  pipes->interface->leave();
  if (pipes->out != nullptr) pipes->out->shutDown();
  if (pipes->in != nullptr) pipes->in->shutDown();
  --users_;  // not the last
}

std::uint32_t HidReportChannel::receiveFrom(InPipe& in, std::span<std::uint8_t> room, std::size_t& received) {
  received = 0;
  if (room.size() <= shared::kHidFrameHeader) return QRN_ERROR_SUCCESS;
  std::size_t length = 0;
  const std::uint32_t rc = in.receiveOne(room.subspan(shared::kHidFrameHeader), length);
  if (rc != QRN_ERROR_SUCCESS || length == 0) return rc;
  const auto header = shared::hidFrameHeader(shared::kHidReport, length);
  std::copy(header.begin(), header.end(), room.begin());
  received = shared::kHidFrameHeader + length;
  return QRN_ERROR_SUCCESS;
}

}  // namespace qvn::usb1
