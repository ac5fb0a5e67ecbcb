#include "shared/client/attribute_table.h"

#include "qvn/transport/attributes.h"
#include "shared/client/failure.h"
#include "shared/client/text_values.h"

namespace qvn::cli {

namespace {

// Of a name that exists in two forms the one that people want comes first: a text before a number, a
// writeable before a read-only one.
constexpr std::string_view kDescriptors[] = {
    attribute::kDevice,
    attribute::kHandle,
    attribute::kPortname,
    attribute::kAddress,
    attribute::kPortType,
    attribute::kTransport,
    attribute::kTransportType,
    attribute::kPrinterModel,
    attribute::kVid,
    attribute::kPid,
    attribute::kUnverified,
    attribute::kVerify,
    attribute::kSilentInstall,
    attribute::kTickCount,
    attribute::kPcName,
    attribute::kCodePage,
    attribute::kPinNumber,
    attribute::kTrueEndOfJob,
    attribute::kMaxWritePacketSize,
    attribute::kNpaRevisionLevel,
    attribute::kNpaWrapping,
    attribute::kAckingForNpaWrapping,
    attribute::kTeojTimeoutAsap,
    attribute::kResolveAddresses,
    attribute::kSpoolerJobId,
    attribute::kNpaSupported,
    attribute::kQueueName,
    attribute::kUserName,
    attribute::kJobName,
    attribute::kHostName,
    attribute::kQueueNumber,
    attribute::kIpAddress,
    attribute::kIpPort,
    attribute::kSubnet,
    attribute::kBroadcastText,
    attribute::kBroadcast,
    attribute::kIpMaskText,
    attribute::kIpMask,
    attribute::kIpGateway,
    attribute::kMacAddress,
    attribute::kNickname,
    attribute::kIpDeviceAddress,
    attribute::kLocalSubnet,
    attribute::kRemoteSubnets,
    attribute::kLocalIpPort,
    attribute::kPortId,
    attribute::kChannelId,
    attribute::kUsbPort,
    attribute::kSerialNumber,
    attribute::kDevicePath,
    attribute::kUsbName,
    attribute::kReadPacketSize,
    attribute::kReadPacketSize2,
    attribute::kWritePacketSize,
    attribute::kWriteablePortNumber,
    attribute::kPortNumber,
    attribute::kEndpoint1Type,
    attribute::kEndpoint2Type,
    attribute::kEndpoint3Type,
    attribute::kEndpoint1DevicePathSuffix,
    attribute::kEndpoint2DevicePathSuffix,
    attribute::kEndpoint3DevicePathSuffix,
    attribute::kEndpoint1MaxPacketSize,
    attribute::kEndpoint2MaxPacketSize,
    attribute::kEndpoint3MaxPacketSize,
    attribute::kAdapterModelName,
    attribute::kDiscoveryMethod,
    attribute::kRefiner,
    attribute::kSubnets,
    attribute::kUnverifiedAddress,
    attribute::kRanges,
    attribute::kUnicast,
    attribute::kMinAddress,
    attribute::kMaxAddress,
    attribute::kUdpPort,
    attribute::kNumberOfPorts,
    attribute::kBeenRefined,
    attribute::kAdapterPorts,
    attribute::kPortNpaStatus,
};

std::string_view between(std::string_view text, std::string_view before, std::string_view after) {
  const std::size_t start = text.find(before);
  if (start == std::string_view::npos) {
    return {};
  }
  text.remove_prefix(start + before.size());
  const std::size_t end = text.find(after);
  return end == std::string_view::npos ? std::string_view() : text.substr(0, end);
}

}  // namespace

std::span<const std::string_view> attributeDescriptors() { return kDescriptors; }

std::string attributeName(std::string_view descriptor) {
  return std::string(between(descriptor, "<Name>", "</Name>"));
}

std::string findDescriptor(const std::string& key) {
  if (key.starts_with("<Name>")) {
    return key;
  }
  for (const std::string_view descriptor : kDescriptors) {
    if (attributeName(descriptor) == key) {
      return std::string(descriptor);
    }
  }
  std::vector<std::string> names;
  for (const std::string_view descriptor : kDescriptors) names.push_back(attributeName(descriptor));
  const std::string meant = didYouMean(key, names);
  throw UsageError("there is no attribute '" + key + "'" +
                   (meant.empty() ? "; 'qvn get --help' lists them, or give a whole descriptor" : meant));
}

}  // namespace qvn::cli
