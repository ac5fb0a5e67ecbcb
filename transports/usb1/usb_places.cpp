#include "usb_places.h"

#include <cstdint>
#include <optional>
#include <utility>

#include "base/device_name.h"
#include "base/usb_settings.h"
#include "channels/usb_channel.h"
#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "shared/base/families.h"

namespace qvn::usb1 {
namespace {

enum class Part : std::uint8_t { PrintData, Packets, Scanner, Hid };

Part partOf(const std::string& deviceAttributes) {
  std::string family;
  AttributeCodec::getString(deviceAttributes, attribute::kDevice, family);
  if (family == shared::kHidFamily) return Part::Hid;
  const bool isScanner = family == shared::kCpdScannerFamily || family == shared::kBpdScannerFamily;
  return isScanner ? Part::Scanner : Part::Packets;
}

std::optional<Function> functionOf(const Functions& functions, Part part) {
  if (part == Part::Scanner)
    return functions.scanner ? std::optional<Function>(*functions.scanner) : std::nullopt;
  return part == Part::Hid ? functions.hid : functions.printer;
}

class UsbPlace : public shared::Place {
 public:
  UsbPlace(KnownDevices& devices, UsbInterfaces& interfaces, std::optional<DeviceName> name, Part part)
      : devices_(devices), interfaces_(interfaces), name_(std::move(name)), part_(part) {}

  shared::Timeouts timeouts() const override { return currentTimeouts(); }

  std::uint32_t connect(const shared::Timeouts&, std::unique_ptr<shared::Channel>& channel) const override {
    if (!name_) return QRN_ERROR_INVALID_PARAMETER;
    std::shared_ptr<const KnownDevice> device;
    std::uint32_t rc = devices_.find(*name_, device);
    if (rc != QRN_ERROR_SUCCESS) return rc;
    const std::optional<Function> function = functionOf(device->functions, part_);
    if (!function) return QRN_ERROR_INVALID_FUNCTION;
    UsbInterfaces::Use use;
    rc = interfaces_.use(*device, *function, use);
    if (rc != QRN_ERROR_SUCCESS) return rc;
    std::unique_ptr<UsbChannel> made = make(*device, std::move(use));
    rc = made->start();
    if (rc == QRN_ERROR_SUCCESS) channel = std::move(made);
    return rc;
  }

 private:
  std::unique_ptr<UsbChannel> make(const KnownDevice& device, UsbInterfaces::Use use) const {
    using Listens = UsbChannel::Listens;
    switch (part_) {
      case Part::PrintData:
        return std::make_unique<UsbChannel>(
            std::move(use), device.id.speaksNpa ? OutKind::Data : OutKind::Stream, Listens::No);
      case Part::Packets:
        return std::make_unique<UsbChannel>(std::move(use), OutKind::Packet, Listens::Yes);
      case Part::Hid:
        if (!device.functions.framesReports) return std::make_unique<HidReportChannel>(std::move(use));
        [[fallthrough]];
      default:
        return std::make_unique<UsbChannel>(std::move(use), OutKind::Stream, Listens::Yes);
    }
  }

  KnownDevices& devices_;
  UsbInterfaces& interfaces_;
  const std::optional<DeviceName> name_;
  const Part part_;
};

std::optional<DeviceName> nameIn(const std::string& deviceAttributes) {
  DeviceName name;
  return deviceNameOf(deviceAttributes, name) ? std::optional(std::move(name)) : std::nullopt;
}

}  // namespace

std::shared_ptr<const shared::Place> UsbPlaces::printPlace(const std::string& deviceAttributes) const {
  return std::make_shared<UsbPlace>(devices_, interfaces_, nameIn(deviceAttributes), Part::PrintData);
}

std::shared_ptr<const shared::Place> UsbPlaces::talkPlace(const std::string& deviceAttributes) const {
  return std::make_shared<UsbPlace>(devices_, interfaces_, nameIn(deviceAttributes),
                                    partOf(deviceAttributes));
}

bool UsbPlaces::isPlain(const std::string& deviceAttributes) const {
  std::uint32_t takesPackets = 0;
  AttributeCodec::getLong(deviceAttributes, attribute::kNpaWrapping, takesPackets);
  return takesPackets == 0;
}

bool UsbPlaces::isPlaced(const std::string& deviceAttributes) const {
  return nameIn(deviceAttributes).has_value();
}

}  // namespace qvn::usb1
