#include "shared/base/device_text.h"

#include <chrono>

#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"

namespace qvn::shared {
namespace {

std::uint32_t tickCount() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

}  // namespace

std::string attributeTextOf(const TransportIdentity& transport, const DeviceText& device) {
  std::string text;
  AttributeCodec::setString(text, attribute::kDevice, device.family);
  AttributeCodec::setLong(text, attribute::kHandle, device.handle);
  AttributeCodec::setString(text, attribute::kPortname, device.portname);
  AttributeCodec::setString(text, attribute::kAddress, device.address);
  AttributeCodec::setString(text, attribute::kPortType, device.portType);
  AttributeCodec::setString(text, attribute::kTransport, transport.name);
  AttributeCodec::setString(text, attribute::kTransportType, transport.kind);
  AttributeCodec::setString(text, attribute::kPrinterModel, device.model);
  if (!device.serial.empty()) AttributeCodec::setString(text, attribute::kSerialNumber, device.serial);
  AttributeCodec::setLong(text, attribute::kTickCount, tickCount());
  return text;
}

}  // namespace qvn::shared
