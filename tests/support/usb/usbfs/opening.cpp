#include "usbfs/opening.h"

#include <fcntl.h>
#include <linux/usb/ch9.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>

namespace qvn::usbfs {

namespace {

constexpr std::uint8_t kSetupSize = 8;
constexpr std::uint32_t kCapabilities = USBDEVFS_CAP_ZERO_PACKET | USBDEVFS_CAP_NO_PACKET_SIZE_LIM |
                                        USBDEVFS_CAP_BULK_SCATTER_GATHER | USBDEVFS_CAP_REAP_AFTER_DISCONNECT;
// What a pipe of one page takes until it is full.
constexpr int kPipeSize = 4096;
constexpr std::uint8_t kGetDeviceIdType = USB_DIR_IN | USB_TYPE_CLASS | USB_RECIP_INTERFACE;

std::array<std::uint8_t, kSetupSize> setupOf(std::uint8_t type, std::uint8_t code, unsigned value,
                                             unsigned index, unsigned length) {
  const auto low = [](unsigned number) { return static_cast<std::uint8_t>(number); };
  return {
      type, code, low(value), low(value >> 8), low(index), low(index >> 8), low(length), low(length >> 8)};
}

unsigned word(const std::uint8_t* bytes) { return bytes[0] | static_cast<unsigned>(bytes[1]) << 8; }

}  // namespace

std::shared_ptr<Opening> Opening::make(const Node& node, int flags) {
  const int file = ::open(node.file.c_str(), (flags & O_ACCMODE) | O_CLOEXEC);
  if (file < 0) return nullptr;
  std::shared_ptr<Opening> opening(new Opening(node, file));
  if (opening->writeEnd_ < 0) return nullptr;
  opening->peer_ = node.connect(*opening);
  if (opening->peer_ != nullptr) return opening;
  ::close(opening->writeEnd_);
  errno = ENODEV;
  return nullptr;
}

Opening::Opening(const Node& node, int file)
    : file_(node.file), claims_(node.file, file), layout_(node.descriptors) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) return;
  readEnd_ = ends[0];
  writeEnd_ = ends[1];
  fcntl(writeEnd_, F_SETPIPE_SZ, kPipeSize);
  setReapable(false);
}

Opening::~Opening() {
  if (readEnd_ >= 0) ::close(readEnd_);
}

void Opening::setReapable(bool reapable) {
  if (readEnd_ < 0 || reapable == reapable_) return;
  reapable_ = reapable;
  std::array<char, kPipeSize> page{};
  const ssize_t moved =
      reapable ? ::read(readEnd_, page.data(), page.size()) : ::write(writeEnd_, page.data(), page.size());
  static_cast<void>(moved);
}

bool Opening::isConnected() const {
  const std::lock_guard lock(mutex_);
  return connected_;
}

int Opening::ioctl(unsigned long request, void* argument) {
  switch (request) {  // these are of no other call's concern, and reaping goes on after an unplug
    case USBDEVFS_REAPURBNDELAY:
      return reap(static_cast<usbdevfs_urb**>(argument));
    case USBDEVFS_DISCARDURB:
      return isConnected() ? discard(static_cast<usbdevfs_urb*>(argument)) : -ENODEV;
    default:
      break;
  }
  const std::lock_guard lock(deviceMutex_);
  if (!isConnected()) return -ENODEV;
  switch (request) {
    case USBDEVFS_SUBMITURB:
      return submit(static_cast<usbdevfs_urb*>(argument));
    case USBDEVFS_CONTROL:
      return control(*static_cast<usbdevfs_ctrltransfer*>(argument));
    case USBDEVFS_BULK:
      return bulk(*static_cast<usbdevfs_bulktransfer*>(argument));
    case USBDEVFS_CLAIMINTERFACE:
      return claim(*static_cast<unsigned*>(argument));
    case USBDEVFS_RELEASEINTERFACE:
      return release(*static_cast<unsigned*>(argument));
    case USBDEVFS_SETINTERFACE: {
      const auto& wanted = *static_cast<usbdevfs_setinterface*>(argument);
      return setInterface(wanted.interface, wanted.altsetting);
    }
    case USBDEVFS_SETCONFIGURATION:
      return setConfiguration(*static_cast<unsigned*>(argument));
    case USBDEVFS_CLEAR_HALT: {
      const unsigned endpoint = *static_cast<unsigned*>(argument);
      int interface = -1;
      const int refused = useEndpoint(endpoint, interface);
      return refused < 0
                 ? refused
                 : this->request(USB_RECIP_ENDPOINT, USB_REQ_CLEAR_FEATURE, USB_ENDPOINT_HALT, endpoint);
    }
    case USBDEVFS_GETDRIVER: {
      auto& asked = *static_cast<usbdevfs_getdriver*>(argument);
      const std::string driver = claims_.driver(asked.interface);
      if (driver.empty()) return -ENODATA;
      asked.driver[driver.copy(asked.driver, sizeof asked.driver - 1)] = '\0';
      return 0;
    }
    case USBDEVFS_IOCTL:
      return driverCommand(*static_cast<usbdevfs_ioctl*>(argument));
    case USBDEVFS_DISCONNECT_CLAIM:
      return disconnectAndClaim(*static_cast<usbdevfs_disconnect_claim*>(argument));
    case USBDEVFS_GET_CAPABILITIES:
      *static_cast<std::uint32_t*>(argument) = kCapabilities;
      return 0;
    case USBDEVFS_GET_SPEED:
      return USB_SPEED_HIGH;
    case USBDEVFS_RESET:
      return reset();
    default:
      return -ENOTTY;
  }
}

// Transfers

int Opening::start(Flight& flight, Transfer transfer) {
  {
    const std::lock_guard lock(mutex_);
    if (!connected_) return -ENODEV;
    flight.id = transfer.id = ++lastId_;
    flying_.push_back(flight);
  }
  peer_->submit(transfer);
  // Who has ended it meanwhile did so before the peer knew it.
  std::unique_lock lock(mutex_);
  const auto found = find(transfer.id);
  if (found != flying_.end() && found->killed != 0) {
    lock.unlock();
    peer_->unlink(transfer.id);
  }
  return 0;
}

std::vector<Opening::Flight>::iterator Opening::find(std::uint32_t id) {
  return std::find_if(flying_.begin(), flying_.end(), [id](const Flight& flight) { return flight.id == id; });
}

void Opening::complete(std::uint32_t id, int status, const std::uint8_t* data, std::size_t actual) {
  const std::lock_guard lock(mutex_);
  const auto flight = find(id);
  if (flight == flying_.end()) return;
  if (actual > flight->length) {
    actual = flight->length;
    status = -EOVERFLOW;
  }
  if (flight->buffer != nullptr && data != nullptr && actual > 0) std::memcpy(flight->buffer, data, actual);
  if (status == 0 && flight->shortIsWrong && actual < flight->length) status = -EREMOTEIO;
  if (flight->killed != 0) status = flight->killed;
  const Result result{flight->urb, status, static_cast<int>(actual)};
  if (flight->urb != nullptr) {
    completed_.push_back(result);
    setReapable(true);
  } else {
    *flight->result = result;
  }
  flying_.erase(flight);
  landed_.notify_all();
}

int Opening::reap(usbdevfs_urb** urb) {
  const std::lock_guard lock(mutex_);
  if (completed_.empty()) return connected_ ? -EAGAIN : -ENODEV;
  const Result result = completed_.front();
  completed_.pop_front();
  if (completed_.empty()) setReapable(false);
  result.urb->status = result.status;
  result.urb->actual_length = result.actual;
  result.urb->error_count = 0;
  *urb = result.urb;
  return 0;
}

int Opening::submit(usbdevfs_urb* urb) {
  const bool isControl = urb->type == USBDEVFS_URB_TYPE_CONTROL;
  if (urb->buffer_length < 0 || (urb->buffer_length > 0 && urb->buffer == nullptr)) return -EINVAL;
  auto* buffer = static_cast<std::uint8_t*>(urb->buffer);
  auto length = static_cast<std::size_t>(urb->buffer_length);
  Transfer transfer{};
  int interface = -1;
  if (isControl) {
    if (length < kSetupSize || length < kSetupSize + word(buffer + 6)) return -EINVAL;
    std::copy(buffer, buffer + kSetupSize, transfer.setup.begin());
    if (const int refused = useRecipient(buffer[0], buffer[1], word(buffer + 4)); refused < 0) return refused;
    transfer.endpoint = buffer[0] & USB_DIR_IN;
    length = word(buffer + 6);
    buffer += kSetupSize;
  } else if (urb->type == USBDEVFS_URB_TYPE_BULK || urb->type == USBDEVFS_URB_TYPE_INTERRUPT) {
    if (const int refused = useEndpoint(urb->endpoint, interface); refused < 0) return refused;
    transfer.endpoint = urb->endpoint;
  } else {
    return -EINVAL;
  }
  transfer.data = transfer.isIn() ? nullptr : buffer;
  transfer.length = length;
  transfer.endsWithZeroPacket = (urb->flags & USBDEVFS_URB_ZERO_PACKET) != 0;
  Flight flight{};
  flight.urb = urb;
  flight.buffer = transfer.isIn() ? buffer : nullptr;
  flight.length = length;
  flight.interface = interface;
  flight.shortIsWrong = transfer.isIn() && (urb->flags & USBDEVFS_URB_SHORT_NOT_OK) != 0;
  return start(flight, transfer);
}

template <typename Matches>
bool Opening::kill(int status, const Matches& matches) {
  std::vector<std::uint32_t> ids;
  {
    const std::lock_guard lock(mutex_);
    for (Flight& flight : flying_) {
      if (!matches(flight)) continue;
      flight.killed = status;
      ids.push_back(flight.id);
    }
  }
  for (const std::uint32_t id : ids) peer_->unlink(id);
  std::unique_lock lock(mutex_);
  landed_.wait(lock, [&] {
    return std::none_of(ids.begin(), ids.end(), [&](std::uint32_t id) { return find(id) != flying_.end(); });
  });
  return !ids.empty();
}

int Opening::discard(const usbdevfs_urb* urb) {
  return kill(-ENOENT, [urb](const Flight& flight) { return flight.urb == urb; }) ? 0 : -EINVAL;
}

int Opening::perform(Flight flight, const Transfer& transfer, unsigned timeout) {
  Result result{};
  flight.result = &result;
  if (const int refused = start(flight, transfer); refused < 0) return refused;
  {
    std::unique_lock lock(mutex_);
    const auto hasLanded = [&] { return find(flight.id) == flying_.end(); };
    if (timeout == 0) {
      landed_.wait(lock, hasLanded);
    } else {
      landed_.wait_for(lock, std::chrono::milliseconds(timeout), hasLanded);
    }
  }
  kill(-ETIMEDOUT, [&](const Flight& candidate) { return candidate.id == flight.id; });
  return result.status < 0 ? result.status : result.actual;
}

int Opening::control(const usbdevfs_ctrltransfer& request) {
  const int refused = useRecipient(request.bRequestType, request.bRequest, request.wIndex);
  if (refused < 0) return refused;
  Transfer transfer{};
  transfer.endpoint = request.bRequestType & USB_DIR_IN;
  transfer.setup =
      setupOf(request.bRequestType, request.bRequest, request.wValue, request.wIndex, request.wLength);
  auto* buffer = static_cast<std::uint8_t*>(request.data);
  transfer.data = transfer.isIn() ? nullptr : buffer;
  transfer.length = request.wLength;
  Flight flight{};
  flight.buffer = transfer.isIn() ? buffer : nullptr;
  flight.length = request.wLength;
  flight.interface = -1;
  return perform(flight, transfer, request.timeout);
}

int Opening::bulk(const usbdevfs_bulktransfer& request) {
  Flight flight{};
  const int refused = useEndpoint(request.ep, flight.interface);
  if (refused < 0) return refused;
  Transfer transfer{};
  transfer.endpoint = static_cast<std::uint8_t>(request.ep);
  auto* buffer = static_cast<std::uint8_t*>(request.data);
  transfer.data = transfer.isIn() ? nullptr : buffer;
  transfer.length = request.len;
  flight.buffer = transfer.isIn() ? buffer : nullptr;
  flight.length = request.len;
  return perform(flight, transfer, request.timeout);
}

int Opening::request(std::uint8_t type, std::uint8_t code, unsigned value, unsigned index) {
  constexpr unsigned kTimeout = 5000;
  Transfer transfer{};
  transfer.endpoint = type & USB_DIR_IN;
  transfer.setup = setupOf(type, code, value, index, 0);
  return perform({}, transfer, kTimeout);
}

// Interfaces

int Opening::useInterface(unsigned interface) { return claims_.holds(interface) ? 0 : claim(interface); }

int Opening::useEndpoint(unsigned endpoint, int& interface) {
  interface = layout_.interfaceOf(static_cast<std::uint8_t>(endpoint));
  return interface < 0 ? -ENOENT : useInterface(static_cast<unsigned>(interface));
}

int Opening::useRecipient(unsigned requestType, unsigned request, unsigned index) {
  if ((requestType & USB_TYPE_MASK) == USB_TYPE_VENDOR) return 0;
  // A printer's device id may be asked for whoever has the interface.
  if (requestType == kGetDeviceIdType && request == 0 && layout_.isPrinter(index >> 8, index & 0xFF))
    return 0;
  int interface = -1;
  switch (requestType & USB_RECIP_MASK) {
    case USB_RECIP_ENDPOINT:
      return (index & 0x7F) == 0 ? 0 : useEndpoint(index & 0xFF, interface);
    case USB_RECIP_INTERFACE:
      return useInterface(index & 0xFF);
    default:
      return 0;
  }
}

int Opening::claim(unsigned interface) {
  return layout_.hasInterface(interface) ? claims_.claim(interface) : -ENOENT;
}

int Opening::release(unsigned interface) {
  if (!layout_.hasInterface(interface)) return -ENOENT;
  if (!claims_.holds(interface)) return -EINVAL;
  kill(-ENOENT,
       [interface](const Flight& flight) { return flight.interface == static_cast<int>(interface); });
  // What the next owner finds is the first alternate setting.
  if (layout_.currentAlternates().at(interface) != 0) setInterface(interface, 0);
  return claims_.release(interface);
}

int Opening::setInterface(unsigned interface, unsigned alternate) {
  if (const int refused = useInterface(interface); refused < 0) return refused;
  if (!layout_.hasAlternate(interface, alternate)) return -EINVAL;
  const int status = request(USB_RECIP_INTERFACE, USB_REQ_SET_INTERFACE, alternate, interface);
  if (status >= 0) layout_.select(interface, alternate);
  return status;
}

int Opening::setConfiguration(unsigned configuration) {
  for (const auto& [interface, alternate] : layout_.currentAlternates()) {
    if (!claims_.driver(interface).empty()) return -EBUSY;
  }
  return request(USB_RECIP_DEVICE, USB_REQ_SET_CONFIGURATION, configuration, 0);
}

int Opening::reset() {
  const int status = request(USB_RECIP_DEVICE, USB_REQ_SET_CONFIGURATION, layout_.configuration(), 0);
  if (status < 0) return status;
  for (const auto& [interface, alternate] : layout_.currentAlternates()) {
    if (alternate != 0) request(USB_RECIP_INTERFACE, USB_REQ_SET_INTERFACE, alternate, interface);
  }
  return 0;
}

int Opening::driverCommand(const usbdevfs_ioctl& command) {
  const auto interface = static_cast<unsigned>(command.ifno);
  if (command.ifno < 0 || !layout_.hasInterface(interface)) return -EINVAL;
  switch (static_cast<unsigned>(command.ioctl_code)) {
    case USBDEVFS_DISCONNECT:
      return claims_.disconnect(interface);
    case USBDEVFS_CONNECT:
      return claims_.connect(interface);
    default:
      return -ENOTTY;
  }
}

int Opening::disconnectAndClaim(const usbdevfs_disconnect_claim& request) {
  if (!layout_.hasInterface(request.interface)) return -EINVAL;
  const std::string driver = claims_.driver(request.interface);
  if (!driver.empty()) {
    const bool isIt = driver == std::string(request.driver, strnlen(request.driver, sizeof request.driver));
    if ((request.flags & USBDEVFS_DISCONNECT_CLAIM_IF_DRIVER) != 0 && !isIt) return -EBUSY;
    if ((request.flags & USBDEVFS_DISCONNECT_CLAIM_EXCEPT_DRIVER) != 0 && isIt) return -EBUSY;
    claims_.disconnect(request.interface);
  }
  return claims_.claim(request.interface);
}

// The end

void Opening::close() {
  const std::lock_guard lock(deviceMutex_);
  kill(-ENOENT, [](const Flight&) { return true; });
  const std::set<unsigned> held = claims_.held();
  for (const unsigned interface : held) {
    if (isConnected()) {
      release(interface);
    } else {
      claims_.release(interface);
    }
  }
  peer_.reset();
}

void Opening::unplug() {
  {
    const std::lock_guard lock(mutex_);
    connected_ = false;
  }
  kill(-ESHUTDOWN, [](const Flight&) { return true; });
  disconnected();
}

void Opening::disconnected() {
  const std::lock_guard lock(mutex_);
  connected_ = false;
  if (readEnd_ >= 0) ::close(readEnd_);
  readEnd_ = -1;
  landed_.notify_all();
}

}  // namespace qvn::usbfs
