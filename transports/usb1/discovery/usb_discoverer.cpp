#include "discovery/usb_discoverer.h"

#include <cstdio>
#include <set>
#include <tuple>

#include "base/device_name.h"
#include "base/transport_identity.h"
#include "base/usb_settings.h"
#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "qvn/transport/device_numbers.h"
#include "qvn/transport/log.h"
#include "shared/base/device_text.h"
#include "shared/base/families.h"
#include "shared/base/part_handles.h"

namespace qvn::usb1 {
namespace {

// Handles are shared by all transports; each numbers its devices in a range of its own.
constexpr std::uint32_t kFirstHandle = 20001;

// What the device's numbers are kept by.
std::string identityOf(const KnownDevice& device, bool hasTwin) {
  char ids[16];
  std::snprintf(ids, sizeof ids, "%04x:%04x", unsigned{device.vendor}, unsigned{device.product});
  const bool isByPort = device.serial.empty() || hasTwin;
  return std::string(ids) + (isByPort ? '@' + device.port : ':' + device.serial);
}

std::string modelOf(const KnownDevice& device) {
  if (!device.id.model.empty()) return device.id.model;
  return device.productName.empty() ? "USB device" : device.productName;
}

std::string suffixOf(const KnownDevice& device, const Function& function, const Pipe& pipe) {
  char endpoint[8];
  std::snprintf(endpoint, sizeof endpoint, "ep_%02x", unsigned{pipe.address});
  return device.interfaceSuffix(function) + '/' + endpoint;
}

std::string describe(const KnownDevice& device, const Function& function, const char* family,
                     std::uint32_t handle) {
  std::string text = shared::attributeTextOf(
      kTransport, {.family = family,
                   .handle = handle,
                   .portname = "USB_" + (device.serial.empty() ? device.port : device.serial),
                   .address = device.port,
                   .portType = "USB",
                   .model = modelOf(device),
                   .serial = device.serial});
  AttributeCodec::setLong(text, attribute::kVid, device.vendor);
  AttributeCodec::setLong(text, attribute::kPid, device.product);
  if (!device.productName.empty()) AttributeCodec::setString(text, attribute::kUsbName, device.productName);
  AttributeCodec::setString(text, attribute::kDevicePath, device.sysfs());
  if (function.out) {
    AttributeCodec::setLong(text, attribute::kWritePacketSize, function.out.packetSize);
    AttributeCodec::setString(text, attribute::kEndpoint1Type, "Bulk OUT");
    AttributeCodec::setString(text, attribute::kEndpoint1DevicePathSuffix,
                              suffixOf(device, function, function.out));
    AttributeCodec::setLong(text, attribute::kEndpoint1MaxPacketSize, function.out.packetSize);
  }
  if (function.in) {
    AttributeCodec::setLong(text, attribute::kReadPacketSize, function.in.packetSize);
    AttributeCodec::setString(text, attribute::kEndpoint2Type, function.out ? "Bulk IN" : "Interrupt IN");
    AttributeCodec::setString(text, attribute::kEndpoint2DevicePathSuffix,
                              suffixOf(device, function, function.in));
    AttributeCodec::setLong(text, attribute::kEndpoint2MaxPacketSize, function.in.packetSize);
  }
  return text;
}

// A printer speaks NPA where it says so and answers.
bool speaksNpa(const KnownDevice& device) { return device.id.speaksNpa && device.functions.printer->in; }

const char* familyOf(const KnownDevice& device) {
  const bool saysBpd = device.id.family == shared::kBpdPrinterFamily;
  return speaksNpa(device) && !saysBpd ? shared::kCpdPrinterFamily : shared::kBpdPrinterFamily;
}

}  // namespace

std::uint32_t UsbDiscoverer::discover(const std::string& options) {
  if (!options.empty()) return QRN_ERROR_INVALID_PARAMETER;
  KnownDevices::Devices devices;
  std::uint32_t result = devices_.list(devices);
  std::set<std::tuple<std::uint16_t, std::uint16_t, std::string>> names;
  for (const auto& device : devices) {
    if (!device->isComplete) continue;
    const bool hasTwin =
        !device->serial.empty() && !names.emplace(device->vendor, device->product, device->serial).second;
    const std::uint32_t rc = tell(*device, hasTwin);
    if (result == QRN_ERROR_SUCCESS) result = rc;
  }
  return result;
}

std::uint32_t UsbDiscoverer::discoverSpecific(const std::string& deviceAttributes) {
  DeviceName name;
  if (!deviceNameOf(deviceAttributes, name)) return QRN_ERROR_INVALID_PARAMETER;
  std::shared_ptr<const KnownDevice> device;
  if (const std::uint32_t rc = devices_.find(name, device); rc != QRN_ERROR_SUCCESS) return rc;
  if (!device->isComplete) return QRN_ERROR_TIMEOUT;
  std::string text = deviceAttributes;
  AttributeCodec::setString(text, attribute::kAddress, device->port);
  AttributeCodec::setString(text, attribute::kDevicePath, device->sysfs());
  notify(text);
  return QRN_ERROR_SUCCESS;
}

std::uint32_t UsbDiscoverer::tell(const KnownDevice& device, bool hasTwin) {
  std::uint32_t handle = 0;
  const std::string identity = identityOf(device, hasTwin);
  const std::uint32_t rc = deviceNumber(kDevicesKey, identity, kFirstHandle, handle);
  if (rc != QRN_ERROR_SUCCESS) return rc;
  if (hasTwin) {
    transportLog(
        kDiscoveryLogComponent, log_level::kError,
        "two devices have the serial number " + device.serial + ": " + identity + " is known by its port");
  }
  const Functions& functions = device.functions;
  if (functions.printer) {
    std::string text = describe(device, *functions.printer, familyOf(device), handle);
    AttributeCodec::setLong(text, attribute::kNpaWrapping, speaksNpa(device) ? 1 : 0);
    notify(text);
  }
  if (functions.scanner) {
    notify(describe(device, *functions.scanner, functions.scanner->family,
                    handle + shared::kScannerHandleOffset));
  }
  if (functions.hid) {
    notify(describe(device, *functions.hid, shared::kHidFamily, handle + shared::kHidHandleOffset));
  }
  return QRN_ERROR_SUCCESS;
}

}  // namespace qvn::usb1
