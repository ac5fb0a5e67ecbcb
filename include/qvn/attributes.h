/*
 * The attributes of devices: the `key` that the functions of qvn.h which read and write attributes take, for
 * example QvnGetStringPrinter(client, handle, QVN_ATTRIBUTE_PORTNAME, ...). Each is a string literal.
 *
 * The key is the attribute's whole descriptor: its name; its type, Long (32 bits), String or ByteArray, which
 * must be the function's or the result is 1629; and its access, which is Writeable where it can be set (a
 * ReadOnly one gives 87). Which attributes a device carries depends on its transport: 1168 tells that it
 * lacks one. The library itself uses the first two groups and carries the others through.
 *
 * Three names exist in two forms (IpMask, Broadcast, PortNumber); the descriptor tells them apart, and both
 * forms write to the same element.
 */
#ifndef QVN_ATTRIBUTES_H
#define QVN_ATTRIBUTES_H

#define QVN_ATTRIBUTE(name, type, access) \
  "<Name>" name "</Name><Type>" type "</Type><Access>" access "</Access>"

/* Device identity and bookkeeping. */
#define QVN_ATTRIBUTE_DEVICE QVN_ATTRIBUTE("Device", "String", "ReadOnly")
#define QVN_ATTRIBUTE_HANDLE QVN_ATTRIBUTE("Handle", "Long", "ReadOnly")
#define QVN_ATTRIBUTE_PORTNAME QVN_ATTRIBUTE("Portname", "String", "Writeable")
#define QVN_ATTRIBUTE_ADDRESS QVN_ATTRIBUTE("Address", "String", "Writeable")
#define QVN_ATTRIBUTE_PORT_TYPE QVN_ATTRIBUTE("PortType", "String", "Writeable")
#define QVN_ATTRIBUTE_TRANSPORT QVN_ATTRIBUTE("Transport", "String", "ReadOnly")
#define QVN_ATTRIBUTE_TRANSPORT_TYPE QVN_ATTRIBUTE("TransportType", "String", "ReadOnly")
#define QVN_ATTRIBUTE_PRINTER_MODEL QVN_ATTRIBUTE("Printer Model", "String", "ReadOnly")
#define QVN_ATTRIBUTE_VID QVN_ATTRIBUTE("Vid", "Long", "ReadOnly")
#define QVN_ATTRIBUTE_PID QVN_ATTRIBUTE("Pid", "Long", "ReadOnly")
#define QVN_ATTRIBUTE_UNVERIFIED QVN_ATTRIBUTE("Unverified", "Long", "ReadOnly")
#define QVN_ATTRIBUTE_VERIFY QVN_ATTRIBUTE("Verify", "Long", "Writeable")
#define QVN_ATTRIBUTE_SILENT_INSTALL QVN_ATTRIBUTE("SilentInstall", "String", "Writeable")
#define QVN_ATTRIBUTE_TICK_COUNT QVN_ATTRIBUTE("TickCount", "Long", "Writeable")
#define QVN_ATTRIBUTE_PC_NAME QVN_ATTRIBUTE("PcName", "String", "Writeable")
#define QVN_ATTRIBUTE_CODE_PAGE QVN_ATTRIBUTE("CodePage", "String", "Writeable")
#define QVN_ATTRIBUTE_PIN_NUMBER QVN_ATTRIBUTE("PinNumber", "String", "Writeable")

/* Printing and NPA. */
#define QVN_ATTRIBUTE_TRUE_END_OF_JOB QVN_ATTRIBUTE("TrueEndOfJob", "Long", "Writeable")
#define QVN_ATTRIBUTE_MAX_WRITE_PACKET_SIZE QVN_ATTRIBUTE("MaxWritePacketSize", "Long", "Writeable")
#define QVN_ATTRIBUTE_NPA_REVISION_LEVEL QVN_ATTRIBUTE("NpaRevisionLevel", "ByteArray", "Writeable")
#define QVN_ATTRIBUTE_NPA_WRAPPING QVN_ATTRIBUTE("NpaWrapping", "Long", "ReadOnly")
#define QVN_ATTRIBUTE_ACKING_FOR_NPA_WRAPPING QVN_ATTRIBUTE("AckingForNpaWrapping", "Long", "ReadOnly")
#define QVN_ATTRIBUTE_TEOJ_TIMEOUT_ASAP QVN_ATTRIBUTE("TeojTimeoutAsap", "Long", "Writeable")
#define QVN_ATTRIBUTE_RESOLVE_ADDRESSES QVN_ATTRIBUTE("ResolveAddresses", "Long", "Writeable")
#define QVN_ATTRIBUTE_SPOOLER_JOB_ID QVN_ATTRIBUTE("SpoolerJobId", "Long", "Writeable")
#define QVN_ATTRIBUTE_NPA_SUPPORTED QVN_ATTRIBUTE("NpaSupported", "Long", "Writeable")
#define QVN_ATTRIBUTE_QUEUE_NAME QVN_ATTRIBUTE("QueueName", "String", "Writeable")
#define QVN_ATTRIBUTE_USER_NAME QVN_ATTRIBUTE("UserName", "String", "Writeable")
#define QVN_ATTRIBUTE_JOB_NAME QVN_ATTRIBUTE("JobName", "String", "Writeable")
#define QVN_ATTRIBUTE_HOST_NAME QVN_ATTRIBUTE("HostName", "String", "Writeable")
#define QVN_ATTRIBUTE_QUEUE_NUMBER QVN_ATTRIBUTE("QueueNumber", "String", "Writeable")

/* Network devices. */
#define QVN_ATTRIBUTE_IP_ADDRESS QVN_ATTRIBUTE("IpAddress", "Long", "Writeable")
#define QVN_ATTRIBUTE_IP_PORT QVN_ATTRIBUTE("IpPort", "Long", "ReadOnly")
#define QVN_ATTRIBUTE_SUBNET QVN_ATTRIBUTE("Subnet", "Long", "ReadOnly")
#define QVN_ATTRIBUTE_BROADCAST QVN_ATTRIBUTE("Broadcast", "Long", "ReadOnly")
#define QVN_ATTRIBUTE_IP_MASK QVN_ATTRIBUTE("IpMask", "Long", "ReadOnly")
#define QVN_ATTRIBUTE_IP_GATEWAY QVN_ATTRIBUTE("IpGateway", "Long", "ReadOnly")
#define QVN_ATTRIBUTE_MAC_ADDRESS QVN_ATTRIBUTE("MacAddress", "ByteArray", "ReadOnly")
#define QVN_ATTRIBUTE_NICKNAME QVN_ATTRIBUTE("Nickname", "String", "Writeable")
#define QVN_ATTRIBUTE_IP_DEVICE_ADDRESS QVN_ATTRIBUTE("IpDeviceAddress", "String", "Writeable")
#define QVN_ATTRIBUTE_LOCAL_SUBNET QVN_ATTRIBUTE("LocalSubnet", "Long", "Writeable")
#define QVN_ATTRIBUTE_REMOTE_SUBNETS QVN_ATTRIBUTE("RemoteSubnets", "String", "Writeable")
#define QVN_ATTRIBUTE_LOCAL_IP_PORT QVN_ATTRIBUTE("LocalIpPort", "Long", "Writeable")
#define QVN_ATTRIBUTE_PORT_ID QVN_ATTRIBUTE("PortId", "Long", "ReadOnly")
#define QVN_ATTRIBUTE_CHANNEL_ID QVN_ATTRIBUTE("ChannelId", "Long", "ReadOnly")
#define QVN_ATTRIBUTE_USB_PORT QVN_ATTRIBUTE("UsbPort", "Long", "ReadOnly")

/* USB devices. */
#define QVN_ATTRIBUTE_SERIAL_NUMBER QVN_ATTRIBUTE("SerialNumber", "String", "ReadOnly")
#define QVN_ATTRIBUTE_DEVICE_PATH QVN_ATTRIBUTE("DevicePath", "String", "ReadOnly")
#define QVN_ATTRIBUTE_USB_NAME QVN_ATTRIBUTE("UsbName", "String", "ReadOnly")
#define QVN_ATTRIBUTE_READ_PACKET_SIZE QVN_ATTRIBUTE("ReadPacketSize", "Long", "ReadOnly")
#define QVN_ATTRIBUTE_READ_PACKET_SIZE2 QVN_ATTRIBUTE("ReadPacketSize2", "Long", "ReadOnly")
#define QVN_ATTRIBUTE_WRITE_PACKET_SIZE QVN_ATTRIBUTE("WritePacketSize", "Long", "ReadOnly")
#define QVN_ATTRIBUTE_PORT_NUMBER QVN_ATTRIBUTE("PortNumber", "Long", "ReadOnly")
#define QVN_ATTRIBUTE_ENDPOINT1_TYPE QVN_ATTRIBUTE("Endpoint1Type", "String", "ReadOnly")
#define QVN_ATTRIBUTE_ENDPOINT2_TYPE QVN_ATTRIBUTE("Endpoint2Type", "String", "ReadOnly")
#define QVN_ATTRIBUTE_ENDPOINT3_TYPE QVN_ATTRIBUTE("Endpoint3Type", "String", "ReadOnly")
#define QVN_ATTRIBUTE_ENDPOINT1_DEVICE_PATH_SUFFIX \
  QVN_ATTRIBUTE("Endpoint1DevicePathSuffix", "String", "ReadOnly")
#define QVN_ATTRIBUTE_ENDPOINT2_DEVICE_PATH_SUFFIX \
  QVN_ATTRIBUTE("Endpoint2DevicePathSuffix", "String", "ReadOnly")
#define QVN_ATTRIBUTE_ENDPOINT3_DEVICE_PATH_SUFFIX \
  QVN_ATTRIBUTE("Endpoint3DevicePathSuffix", "String", "ReadOnly")
#define QVN_ATTRIBUTE_ENDPOINT1_MAX_PACKET_SIZE QVN_ATTRIBUTE("Endpoint1MaxPacketSize", "Long", "ReadOnly")
#define QVN_ATTRIBUTE_ENDPOINT2_MAX_PACKET_SIZE QVN_ATTRIBUTE("Endpoint2MaxPacketSize", "Long", "ReadOnly")
#define QVN_ATTRIBUTE_ENDPOINT3_MAX_PACKET_SIZE QVN_ATTRIBUTE("Endpoint3MaxPacketSize", "Long", "ReadOnly")

/* Network discovery. */
#define QVN_ATTRIBUTE_IP_MASK_TEXT QVN_ATTRIBUTE("IpMask", "String", "ReadOnly")
#define QVN_ATTRIBUTE_ADAPTER_MODEL_NAME QVN_ATTRIBUTE("AdapterModelName", "String", "Writeable")
#define QVN_ATTRIBUTE_DISCOVERY_METHOD QVN_ATTRIBUTE("DiscoveryMethod", "String", "Writeable")
#define QVN_ATTRIBUTE_REFINER QVN_ATTRIBUTE("Refiner", "String", "Writeable")
#define QVN_ATTRIBUTE_SUBNETS QVN_ATTRIBUTE("Subnets", "String", "Writeable")
#define QVN_ATTRIBUTE_UNVERIFIED_ADDRESS QVN_ATTRIBUTE("UnverifiedAddress", "String", "Writeable")
#define QVN_ATTRIBUTE_RANGES QVN_ATTRIBUTE("Ranges", "String", "Writeable")
#define QVN_ATTRIBUTE_BROADCAST_TEXT QVN_ATTRIBUTE("Broadcast", "String", "Writeable")
#define QVN_ATTRIBUTE_UNICAST QVN_ATTRIBUTE("Unicast", "String", "Writeable")
#define QVN_ATTRIBUTE_MIN_ADDRESS QVN_ATTRIBUTE("MinAddress", "String", "Writeable")
#define QVN_ATTRIBUTE_MAX_ADDRESS QVN_ATTRIBUTE("MaxAddress", "String", "Writeable")
#define QVN_ATTRIBUTE_UDP_PORT QVN_ATTRIBUTE("UdpPort", "Long", "Writeable")
#define QVN_ATTRIBUTE_NUMBER_OF_PORTS QVN_ATTRIBUTE("NumberOfPorts", "Long", "Writeable")
#define QVN_ATTRIBUTE_WRITEABLE_PORT_NUMBER QVN_ATTRIBUTE("PortNumber", "Long", "Writeable")
#define QVN_ATTRIBUTE_BEEN_REFINED QVN_ATTRIBUTE("BeenRefined", "Long", "Writeable")
#define QVN_ATTRIBUTE_ADAPTER_PORTS QVN_ATTRIBUTE("AdapterPorts", "ByteArray", "Writeable")
#define QVN_ATTRIBUTE_PORT_NPA_STATUS QVN_ATTRIBUTE("PortNpaStatus", "ByteArray", "Writeable")

#endif
