// The descriptors of every attribute that the library and its transports use, by group.
//
// Who reads and writes them: the library uses the first two groups and carries the others through for the
// transports. Three names exist in two forms (IpMask, Broadcast, PortNumber); the descriptor tells them
// apart, and both forms write to the same element.
#pragma once

namespace qvn::attribute {

// Device identity and bookkeeping.
inline constexpr char kDevice[] = "<Name>Device</Name><Type>String</Type><Access>ReadOnly</Access>";
inline constexpr char kHandle[] = "<Name>Handle</Name><Type>Long</Type><Access>ReadOnly</Access>";
inline constexpr char kPortname[] = "<Name>Portname</Name><Type>String</Type><Access>Writeable</Access>";
inline constexpr char kAddress[] = "<Name>Address</Name><Type>String</Type><Access>Writeable</Access>";
inline constexpr char kPortType[] = "<Name>PortType</Name><Type>String</Type><Access>Writeable</Access>";
inline constexpr char kTransport[] = "<Name>Transport</Name><Type>String</Type><Access>ReadOnly</Access>";
inline constexpr char kTransportType[] =
    "<Name>TransportType</Name><Type>String</Type><Access>ReadOnly</Access>";
inline constexpr char kPrinterModel[] =
    "<Name>Printer Model</Name><Type>String</Type><Access>ReadOnly</Access>";
inline constexpr char kVid[] = "<Name>Vid</Name><Type>Long</Type><Access>ReadOnly</Access>";
inline constexpr char kPid[] = "<Name>Pid</Name><Type>Long</Type><Access>ReadOnly</Access>";
inline constexpr char kUnverified[] = "<Name>Unverified</Name><Type>Long</Type><Access>ReadOnly</Access>";
inline constexpr char kVerify[] = "<Name>Verify</Name><Type>Long</Type><Access>Writeable</Access>";
inline constexpr char kSilentInstall[] =
    "<Name>SilentInstall</Name><Type>String</Type><Access>Writeable</Access>";
inline constexpr char kTickCount[] = "<Name>TickCount</Name><Type>Long</Type><Access>Writeable</Access>";
inline constexpr char kPcName[] = "<Name>PcName</Name><Type>String</Type><Access>Writeable</Access>";
inline constexpr char kCodePage[] = "<Name>CodePage</Name><Type>String</Type><Access>Writeable</Access>";
inline constexpr char kPinNumber[] = "<Name>PinNumber</Name><Type>String</Type><Access>Writeable</Access>";

// Printing and NPA.
inline constexpr char kTrueEndOfJob[] =
    "<Name>TrueEndOfJob</Name><Type>Long</Type><Access>Writeable</Access>";
inline constexpr char kMaxWritePacketSize[] =
    "<Name>MaxWritePacketSize</Name><Type>Long</Type><Access>Writeable</Access>";
inline constexpr char kNpaRevisionLevel[] =
    "<Name>NpaRevisionLevel</Name><Type>ByteArray</Type><Access>Writeable</Access>";
inline constexpr char kNpaWrapping[] = "<Name>NpaWrapping</Name><Type>Long</Type><Access>ReadOnly</Access>";
inline constexpr char kAckingForNpaWrapping[] =
    "<Name>AckingForNpaWrapping</Name><Type>Long</Type><Access>ReadOnly</Access>";
inline constexpr char kTeojTimeoutAsap[] =
    "<Name>TeojTimeoutAsap</Name><Type>Long</Type><Access>Writeable</Access>";
inline constexpr char kResolveAddresses[] =
    "<Name>ResolveAddresses</Name><Type>Long</Type><Access>Writeable</Access>";
inline constexpr char kSpoolerJobId[] =
    "<Name>SpoolerJobId</Name><Type>Long</Type><Access>Writeable</Access>";
inline constexpr char kNpaSupported[] =
    "<Name>NpaSupported</Name><Type>Long</Type><Access>Writeable</Access>";
inline constexpr char kQueueName[] = "<Name>QueueName</Name><Type>String</Type><Access>Writeable</Access>";
inline constexpr char kUserName[] = "<Name>UserName</Name><Type>String</Type><Access>Writeable</Access>";
inline constexpr char kJobName[] = "<Name>JobName</Name><Type>String</Type><Access>Writeable</Access>";
inline constexpr char kHostName[] = "<Name>HostName</Name><Type>String</Type><Access>Writeable</Access>";
inline constexpr char kQueueNumber[] =
    "<Name>QueueNumber</Name><Type>String</Type><Access>Writeable</Access>";

// Network devices.
inline constexpr char kIpAddress[] = "<Name>IpAddress</Name><Type>Long</Type><Access>Writeable</Access>";
inline constexpr char kIpPort[] = "<Name>IpPort</Name><Type>Long</Type><Access>ReadOnly</Access>";
inline constexpr char kSubnet[] = "<Name>Subnet</Name><Type>Long</Type><Access>ReadOnly</Access>";
inline constexpr char kBroadcast[] = "<Name>Broadcast</Name><Type>Long</Type><Access>ReadOnly</Access>";
inline constexpr char kIpMask[] = "<Name>IpMask</Name><Type>Long</Type><Access>ReadOnly</Access>";
inline constexpr char kIpGateway[] = "<Name>IpGateway</Name><Type>Long</Type><Access>ReadOnly</Access>";
inline constexpr char kMacAddress[] =
    "<Name>MacAddress</Name><Type>ByteArray</Type><Access>ReadOnly</Access>";
inline constexpr char kNickname[] = "<Name>Nickname</Name><Type>String</Type><Access>Writeable</Access>";
inline constexpr char kIpDeviceAddress[] =
    "<Name>IpDeviceAddress</Name><Type>String</Type><Access>Writeable</Access>";
inline constexpr char kLocalSubnet[] = "<Name>LocalSubnet</Name><Type>Long</Type><Access>Writeable</Access>";
inline constexpr char kRemoteSubnets[] =
    "<Name>RemoteSubnets</Name><Type>String</Type><Access>Writeable</Access>";
inline constexpr char kLocalIpPort[] = "<Name>LocalIpPort</Name><Type>Long</Type><Access>Writeable</Access>";
inline constexpr char kPortId[] = "<Name>PortId</Name><Type>Long</Type><Access>ReadOnly</Access>";
inline constexpr char kChannelId[] = "<Name>ChannelId</Name><Type>Long</Type><Access>ReadOnly</Access>";
inline constexpr char kUsbPort[] = "<Name>UsbPort</Name><Type>Long</Type><Access>ReadOnly</Access>";

// USB devices.
inline constexpr char kSerialNumber[] =
    "<Name>SerialNumber</Name><Type>String</Type><Access>ReadOnly</Access>";
inline constexpr char kDevicePath[] = "<Name>DevicePath</Name><Type>String</Type><Access>ReadOnly</Access>";
inline constexpr char kUsbName[] = "<Name>UsbName</Name><Type>String</Type><Access>ReadOnly</Access>";
inline constexpr char kReadPacketSize[] =
    "<Name>ReadPacketSize</Name><Type>Long</Type><Access>ReadOnly</Access>";
inline constexpr char kReadPacketSize2[] =
    "<Name>ReadPacketSize2</Name><Type>Long</Type><Access>ReadOnly</Access>";
inline constexpr char kWritePacketSize[] =
    "<Name>WritePacketSize</Name><Type>Long</Type><Access>ReadOnly</Access>";
inline constexpr char kPortNumber[] = "<Name>PortNumber</Name><Type>Long</Type><Access>ReadOnly</Access>";
inline constexpr char kEndpoint1Type[] =
    "<Name>Endpoint1Type</Name><Type>String</Type><Access>ReadOnly</Access>";
inline constexpr char kEndpoint2Type[] =
    "<Name>Endpoint2Type</Name><Type>String</Type><Access>ReadOnly</Access>";
inline constexpr char kEndpoint3Type[] =
    "<Name>Endpoint3Type</Name><Type>String</Type><Access>ReadOnly</Access>";
inline constexpr char kEndpoint1DevicePathSuffix[] =
    "<Name>Endpoint1DevicePathSuffix</Name><Type>String</Type><Access>ReadOnly</Access>";
inline constexpr char kEndpoint2DevicePathSuffix[] =
    "<Name>Endpoint2DevicePathSuffix</Name><Type>String</Type><Access>ReadOnly</Access>";
inline constexpr char kEndpoint3DevicePathSuffix[] =
    "<Name>Endpoint3DevicePathSuffix</Name><Type>String</Type><Access>ReadOnly</Access>";
inline constexpr char kEndpoint1MaxPacketSize[] =
    "<Name>Endpoint1MaxPacketSize</Name><Type>Long</Type><Access>ReadOnly</Access>";
inline constexpr char kEndpoint2MaxPacketSize[] =
    "<Name>Endpoint2MaxPacketSize</Name><Type>Long</Type><Access>ReadOnly</Access>";
inline constexpr char kEndpoint3MaxPacketSize[] =
    "<Name>Endpoint3MaxPacketSize</Name><Type>Long</Type><Access>ReadOnly</Access>";

// Network discovery.
inline constexpr char kIpMaskText[] = "<Name>IpMask</Name><Type>String</Type><Access>ReadOnly</Access>";
inline constexpr char kAdapterModelName[] =
    "<Name>AdapterModelName</Name><Type>String</Type><Access>Writeable</Access>";
inline constexpr char kDiscoveryMethod[] =
    "<Name>DiscoveryMethod</Name><Type>String</Type><Access>Writeable</Access>";
inline constexpr char kRefiner[] = "<Name>Refiner</Name><Type>String</Type><Access>Writeable</Access>";
inline constexpr char kSubnets[] = "<Name>Subnets</Name><Type>String</Type><Access>Writeable</Access>";
inline constexpr char kUnverifiedAddress[] =
    "<Name>UnverifiedAddress</Name><Type>String</Type><Access>Writeable</Access>";
inline constexpr char kRanges[] = "<Name>Ranges</Name><Type>String</Type><Access>Writeable</Access>";
inline constexpr char kBroadcastText[] =
    "<Name>Broadcast</Name><Type>String</Type><Access>Writeable</Access>";
inline constexpr char kUnicast[] = "<Name>Unicast</Name><Type>String</Type><Access>Writeable</Access>";
inline constexpr char kMinAddress[] = "<Name>MinAddress</Name><Type>String</Type><Access>Writeable</Access>";
inline constexpr char kMaxAddress[] = "<Name>MaxAddress</Name><Type>String</Type><Access>Writeable</Access>";
inline constexpr char kUdpPort[] = "<Name>UdpPort</Name><Type>Long</Type><Access>Writeable</Access>";
inline constexpr char kNumberOfPorts[] =
    "<Name>NumberOfPorts</Name><Type>Long</Type><Access>Writeable</Access>";
inline constexpr char kWriteablePortNumber[] =
    "<Name>PortNumber</Name><Type>Long</Type><Access>Writeable</Access>";
inline constexpr char kBeenRefined[] = "<Name>BeenRefined</Name><Type>Long</Type><Access>Writeable</Access>";
inline constexpr char kAdapterPorts[] =
    "<Name>AdapterPorts</Name><Type>ByteArray</Type><Access>Writeable</Access>";
inline constexpr char kPortNpaStatus[] =
    "<Name>PortNpaStatus</Name><Type>ByteArray</Type><Access>Writeable</Access>";

}  // namespace qvn::attribute
