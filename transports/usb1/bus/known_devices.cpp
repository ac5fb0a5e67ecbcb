#include "bus/known_devices.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <span>
#include <utility>

#include "base/transport_identity.h"
#include "bus/libusb_code.h"
#include "bus/open_device.h"
#include "bus/transfer.h"
#include "qvn/result_codes.h"
#include "qvn/transport/log.h"
#include "shared/base/plain_text.h"

namespace qvn::usb1 {
namespace {

// The first operation on a device may wait for this, with the device's lock.
constexpr std::chrono::milliseconds kAnswerTimeout{200};

constexpr std::uint8_t kGetDeviceId = 0;

struct FreeConfiguration {
  void operator()(libusb_config_descriptor* configuration) const {
    libusb_free_config_descriptor(configuration);
  }
};

std::string portOf(libusb_device* device) {
  std::array<std::uint8_t, 8> ports;
  const int count = libusb_get_port_numbers(device, ports.data(), static_cast<int>(ports.size()));
  std::string text = std::to_string(libusb_get_bus_number(device));
  for (int i = 0; i < count; ++i)
    text += (i == 0 ? '-' : '.') + std::to_string(ports[static_cast<std::size_t>(i)]);
  return text;
}

std::string nodeOf(libusb_device* device) {
  char node[32];
  std::snprintf(node, sizeof node, "/dev/bus/usb/%03u/%03u", unsigned{libusb_get_bus_number(device)},
                unsigned{libusb_get_device_address(device)});
  return node;
}

// Asks a device for what it says of itself, all in one time.
class Questions {
 public:
  Questions(UsbBus& bus, libusb_device_handle* device)
      : bus_(bus), device_(device), deadline_(UsbBus::Clock::now() + kAnswerTimeout) {}

  // Empty when there is none, or it is none that may stand in an attribute text.
  std::string text(std::uint8_t index) {
    if (index == 0) return {};
    std::array<std::uint8_t, 255> answer;
    const auto languages = descriptor(0, 0, answer);
    if (languages.size() < 4) return {};
    const auto language = static_cast<std::uint16_t>(languages[2] | languages[3] << 8);
    const auto units = descriptor(index, language, answer);
    std::string text;
    for (std::size_t i = 2; i + 1 < units.size(); i += 2) {
      if (units[i + 1] != 0) return {};
      text += static_cast<char>(units[i]);
    }
    text.resize(std::min(text.size(), text.find_last_not_of(' ') + 1));
    return shared::isPlainText(text) ? text : std::string();
  }

  bool areLate() const { return UsbBus::Clock::now() >= deadline_; }

  DeviceId deviceId(const KnownDevice& device) {
    std::array<std::uint8_t, 1024> answer;
    const Function& printer = *device.functions.printer;
    const auto index = static_cast<std::uint16_t>(printer.interface << 8 | printer.alternate);
    return parseDeviceId(ask({request_type::kInterfaceClassIn, kGetDeviceId, 0, index}, answer));
  }

 private:
  std::span<const std::uint8_t> ask(const Setup& setup, std::span<std::uint8_t> answer) {
    if (areLate()) return {};
    const Transfer::Result result = Transfer(bus_).control(device_, setup, answer, deadline_);
    return answer.first(result.code == QRN_ERROR_SUCCESS ? result.count : 0);
  }

  // As long as it says, at most as long as it came.
  std::span<const std::uint8_t> descriptor(std::uint8_t index, std::uint16_t language,
                                           std::span<std::uint8_t> answer) {
    const auto value = static_cast<std::uint16_t>(LIBUSB_DT_STRING << 8 | index);
    const auto came =
        ask({request_type::kStandardIn, LIBUSB_REQUEST_GET_DESCRIPTOR, value, language}, answer);
    if (came.size() < 2 || came[1] != LIBUSB_DT_STRING) return {};
    return came.first(std::min<std::size_t>(came.size(), came[0]));
  }

  UsbBus& bus_;
  libusb_device_handle* const device_;
  const UsbBus::Clock::time_point deadline_;
};

}  // namespace

KnownDevices::~KnownDevices() {
  if (isTold_) libusb_hotplug_deregister_callback(bus_.context(), callback_);
}

void KnownDevices::start() {
  isTold_ =
      libusb_hotplug_register_callback(bus_.context(), LIBUSB_HOTPLUG_EVENT_DEVICE_LEFT, 0,
                                       LIBUSB_HOTPLUG_MATCH_ANY, LIBUSB_HOTPLUG_MATCH_ANY,
                                       LIBUSB_HOTPLUG_MATCH_ANY, onLeft, this, &callback_) == LIBUSB_SUCCESS;
}

int KnownDevices::onLeft(libusb_context*, libusb_device* device, libusb_hotplug_event, void* self) {
  auto& devices = *static_cast<KnownDevices*>(self);
  std::shared_ptr<const KnownDevice> forgotten;  // without the lock
  const std::lock_guard<std::mutex> lock(devices.mutex_);
  const auto found = devices.known_.find(device);
  if (found == devices.known_.end()) return 0;
  forgotten = std::move(found->second);
  devices.known_.erase(found);
  return 0;
}

std::uint32_t KnownDevices::list(Devices& devices) {
  libusb_device** all = nullptr;
  const ssize_t count = libusb_get_device_list(bus_.context(), &all);
  if (count < 0) return codeFromError(static_cast<int>(count));
  std::uint32_t result = QRN_ERROR_SUCCESS;
  for (libusb_device* device : std::span(all, static_cast<std::size_t>(count))) {
    std::shared_ptr<const KnownDevice> one = known(device);
    if (one == nullptr && learn(device, one) == QRN_ERROR_ACCESS_DENIED) result = QRN_ERROR_ACCESS_DENIED;
    if (one != nullptr) devices.push_back(std::move(one));
  }
  libusb_free_device_list(all, 1);
  std::sort(devices.begin(), devices.end(),
            [](const auto& left, const auto& right) { return left->port < right->port; });
  return result;
}

std::uint32_t KnownDevices::find(const DeviceName& name, std::shared_ptr<const KnownDevice>& device) {
  Devices devices;
  const std::uint32_t rc = list(devices);
  for (const auto& one : devices) {
    if (one->vendor != name.vendor || one->product != name.product || one->serial != name.serial) continue;
    const bool isThere = one->port == name.port;
    if (isThere || (!name.serial.empty() && device == nullptr)) device = one;
    if (isThere) break;
  }
  if (device != nullptr) return QRN_ERROR_SUCCESS;
  return rc != QRN_ERROR_SUCCESS ? rc : std::uint32_t{QRN_ERROR_DEVICE_NOT_CONNECTED};
}

std::shared_ptr<const KnownDevice> KnownDevices::known(libusb_device* device) {
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto found = known_.find(device);
  return found != known_.end() ? found->second : nullptr;
}

// What is no device for this transport is not remembered: its descriptors are with the system.
std::uint32_t KnownDevices::learn(libusb_device* device, std::shared_ptr<const KnownDevice>& known) {
  libusb_device_descriptor descriptor;
  libusb_config_descriptor* active = nullptr;
  if (libusb_get_device_descriptor(device, &descriptor) != LIBUSB_SUCCESS ||
      libusb_get_active_config_descriptor(device, &active) != LIBUSB_SUCCESS) {
    return QRN_ERROR_DEVICE_NOT_CONNECTED;
  }
  const std::unique_ptr<libusb_config_descriptor, FreeConfiguration> configuration(active);
  auto learnt = std::make_shared<KnownDevice>();
  learnt->functions = findFunctions(descriptor.idVendor, *configuration);
  if (!learnt->functions.areThere()) return QRN_ERROR_SUCCESS;
  learnt->device.reset(libusb_ref_device(device));
  learnt->vendor = descriptor.idVendor;
  learnt->product = descriptor.idProduct;
  learnt->configuration = configuration->bConfigurationValue;
  learnt->port = portOf(device);
  learnt->node = nodeOf(device);

  OpenDevice opened;
  if (const std::uint32_t rc = openDevice(*learnt, kDiscoveryLogComponent, opened); rc != QRN_ERROR_SUCCESS)
    return rc;
  Questions questions(bus_, opened.get());
  learnt->serial = questions.text(descriptor.iSerialNumber);
  if (learnt->functions.printer) learnt->id = questions.deviceId(*learnt);
  learnt->productName = questions.text(descriptor.iProduct);
  if (learnt->serial.empty()) learnt->serial = learnt->id.serial;
  learnt->isComplete = !questions.areLate();
  known = learnt;
  if (!learnt->isComplete) {
    transportLog(kDiscoveryLogComponent, log_level::kError, learnt->node + " does not answer in time");
    return QRN_ERROR_TIMEOUT;
  }
  const std::lock_guard<std::mutex> lock(mutex_);
  known_[device] = std::move(learnt);
  return QRN_ERROR_SUCCESS;
}

}  // namespace qvn::usb1
