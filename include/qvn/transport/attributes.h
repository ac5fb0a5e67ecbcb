// The descriptors of every attribute that the library and its transports use, as C++ has them: the table is
// qvn/attributes.h, which also tells what a descriptor is.
#pragma once

#include "qvn/attributes.h"

namespace qvn::attribute {

// Device identity and bookkeeping.
inline constexpr char kDevice[] = QVN_ATTRIBUTE_DEVICE;
inline constexpr char kHandle[] = QVN_ATTRIBUTE_HANDLE;
inline constexpr char kPortname[] = QVN_ATTRIBUTE_PORTNAME;
inline constexpr char kAddress[] = QVN_ATTRIBUTE_ADDRESS;
inline constexpr char kPortType[] = QVN_ATTRIBUTE_PORT_TYPE;
inline constexpr char kTransport[] = QVN_ATTRIBUTE_TRANSPORT;
inline constexpr char kTransportType[] = QVN_ATTRIBUTE_TRANSPORT_TYPE;
inline constexpr char kPrinterModel[] = QVN_ATTRIBUTE_PRINTER_MODEL;
inline constexpr char kVid[] = QVN_ATTRIBUTE_VID;
inline constexpr char kPid[] = QVN_ATTRIBUTE_PID;
inline constexpr char kUnverified[] = QVN_ATTRIBUTE_UNVERIFIED;
inline constexpr char kVerify[] = QVN_ATTRIBUTE_VERIFY;
inline constexpr char kSilentInstall[] = QVN_ATTRIBUTE_SILENT_INSTALL;
inline constexpr char kTickCount[] = QVN_ATTRIBUTE_TICK_COUNT;
inline constexpr char kPcName[] = QVN_ATTRIBUTE_PC_NAME;
inline constexpr char kCodePage[] = QVN_ATTRIBUTE_CODE_PAGE;
inline constexpr char kPinNumber[] = QVN_ATTRIBUTE_PIN_NUMBER;

// Printing and NPA.
inline constexpr char kTrueEndOfJob[] = QVN_ATTRIBUTE_TRUE_END_OF_JOB;
inline constexpr char kMaxWritePacketSize[] = QVN_ATTRIBUTE_MAX_WRITE_PACKET_SIZE;
inline constexpr char kNpaRevisionLevel[] = QVN_ATTRIBUTE_NPA_REVISION_LEVEL;
inline constexpr char kNpaWrapping[] = QVN_ATTRIBUTE_NPA_WRAPPING;
inline constexpr char kAckingForNpaWrapping[] = QVN_ATTRIBUTE_ACKING_FOR_NPA_WRAPPING;
inline constexpr char kTeojTimeoutAsap[] = QVN_ATTRIBUTE_TEOJ_TIMEOUT_ASAP;
inline constexpr char kResolveAddresses[] = QVN_ATTRIBUTE_RESOLVE_ADDRESSES;
inline constexpr char kSpoolerJobId[] = QVN_ATTRIBUTE_SPOOLER_JOB_ID;
inline constexpr char kNpaSupported[] = QVN_ATTRIBUTE_NPA_SUPPORTED;
inline constexpr char kQueueName[] = QVN_ATTRIBUTE_QUEUE_NAME;
inline constexpr char kUserName[] = QVN_ATTRIBUTE_USER_NAME;
inline constexpr char kJobName[] = QVN_ATTRIBUTE_JOB_NAME;
inline constexpr char kHostName[] = QVN_ATTRIBUTE_HOST_NAME;
inline constexpr char kQueueNumber[] = QVN_ATTRIBUTE_QUEUE_NUMBER;

// Network devices.
inline constexpr char kIpAddress[] = QVN_ATTRIBUTE_IP_ADDRESS;
inline constexpr char kIpPort[] = QVN_ATTRIBUTE_IP_PORT;
inline constexpr char kSubnet[] = QVN_ATTRIBUTE_SUBNET;
inline constexpr char kBroadcast[] = QVN_ATTRIBUTE_BROADCAST;
inline constexpr char kIpMask[] = QVN_ATTRIBUTE_IP_MASK;
inline constexpr char kIpGateway[] = QVN_ATTRIBUTE_IP_GATEWAY;
inline constexpr char kMacAddress[] = QVN_ATTRIBUTE_MAC_ADDRESS;
inline constexpr char kNickname[] = QVN_ATTRIBUTE_NICKNAME;
inline constexpr char kIpDeviceAddress[] = QVN_ATTRIBUTE_IP_DEVICE_ADDRESS;
inline constexpr char kLocalSubnet[] = QVN_ATTRIBUTE_LOCAL_SUBNET;
inline constexpr char kRemoteSubnets[] = QVN_ATTRIBUTE_REMOTE_SUBNETS;
inline constexpr char kLocalIpPort[] = QVN_ATTRIBUTE_LOCAL_IP_PORT;
inline constexpr char kPortId[] = QVN_ATTRIBUTE_PORT_ID;
inline constexpr char kChannelId[] = QVN_ATTRIBUTE_CHANNEL_ID;
inline constexpr char kUsbPort[] = QVN_ATTRIBUTE_USB_PORT;

// USB devices.
inline constexpr char kSerialNumber[] = QVN_ATTRIBUTE_SERIAL_NUMBER;
inline constexpr char kDevicePath[] = QVN_ATTRIBUTE_DEVICE_PATH;
inline constexpr char kUsbName[] = QVN_ATTRIBUTE_USB_NAME;
inline constexpr char kReadPacketSize[] = QVN_ATTRIBUTE_READ_PACKET_SIZE;
inline constexpr char kReadPacketSize2[] = QVN_ATTRIBUTE_READ_PACKET_SIZE2;
inline constexpr char kWritePacketSize[] = QVN_ATTRIBUTE_WRITE_PACKET_SIZE;
inline constexpr char kPortNumber[] = QVN_ATTRIBUTE_PORT_NUMBER;
inline constexpr char kEndpoint1Type[] = QVN_ATTRIBUTE_ENDPOINT1_TYPE;
inline constexpr char kEndpoint2Type[] = QVN_ATTRIBUTE_ENDPOINT2_TYPE;
inline constexpr char kEndpoint3Type[] = QVN_ATTRIBUTE_ENDPOINT3_TYPE;
inline constexpr char kEndpoint1DevicePathSuffix[] = QVN_ATTRIBUTE_ENDPOINT1_DEVICE_PATH_SUFFIX;
inline constexpr char kEndpoint2DevicePathSuffix[] = QVN_ATTRIBUTE_ENDPOINT2_DEVICE_PATH_SUFFIX;
inline constexpr char kEndpoint3DevicePathSuffix[] = QVN_ATTRIBUTE_ENDPOINT3_DEVICE_PATH_SUFFIX;
inline constexpr char kEndpoint1MaxPacketSize[] = QVN_ATTRIBUTE_ENDPOINT1_MAX_PACKET_SIZE;
inline constexpr char kEndpoint2MaxPacketSize[] = QVN_ATTRIBUTE_ENDPOINT2_MAX_PACKET_SIZE;
inline constexpr char kEndpoint3MaxPacketSize[] = QVN_ATTRIBUTE_ENDPOINT3_MAX_PACKET_SIZE;

// Network discovery.
inline constexpr char kIpMaskText[] = QVN_ATTRIBUTE_IP_MASK_TEXT;
inline constexpr char kAdapterModelName[] = QVN_ATTRIBUTE_ADAPTER_MODEL_NAME;
inline constexpr char kDiscoveryMethod[] = QVN_ATTRIBUTE_DISCOVERY_METHOD;
inline constexpr char kRefiner[] = QVN_ATTRIBUTE_REFINER;
inline constexpr char kSubnets[] = QVN_ATTRIBUTE_SUBNETS;
inline constexpr char kUnverifiedAddress[] = QVN_ATTRIBUTE_UNVERIFIED_ADDRESS;
inline constexpr char kRanges[] = QVN_ATTRIBUTE_RANGES;
inline constexpr char kBroadcastText[] = QVN_ATTRIBUTE_BROADCAST_TEXT;
inline constexpr char kUnicast[] = QVN_ATTRIBUTE_UNICAST;
inline constexpr char kMinAddress[] = QVN_ATTRIBUTE_MIN_ADDRESS;
inline constexpr char kMaxAddress[] = QVN_ATTRIBUTE_MAX_ADDRESS;
inline constexpr char kUdpPort[] = QVN_ATTRIBUTE_UDP_PORT;
inline constexpr char kNumberOfPorts[] = QVN_ATTRIBUTE_NUMBER_OF_PORTS;
inline constexpr char kWriteablePortNumber[] = QVN_ATTRIBUTE_WRITEABLE_PORT_NUMBER;
inline constexpr char kBeenRefined[] = QVN_ATTRIBUTE_BEEN_REFINED;
inline constexpr char kAdapterPorts[] = QVN_ATTRIBUTE_ADAPTER_PORTS;
inline constexpr char kPortNpaStatus[] = QVN_ATTRIBUTE_PORT_NPA_STATUS;

}  // namespace qvn::attribute
