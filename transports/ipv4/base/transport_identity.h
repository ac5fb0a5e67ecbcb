// What the library knows this transport and the parts of its devices by.
#pragma once

namespace qvn::ipv4 {

inline constexpr char kTransportName[] = "IPv4";
inline constexpr char kTransportKind[] = "NETWORK_TRANSPORT";

// Of what discovery logs.
inline constexpr char kDiscoveryLogComponent[] = "Ip1TransportDiscovery";

inline constexpr char kBpdPrinterFamily[] = "BpdPrinter";

// Beside the printers, which tell their family themselves. A HID is the same behind both.
inline constexpr char kCpdScannerFamily[] = "CpdScanner";
inline constexpr char kBpdScannerFamily[] = "BpdScanner";
inline constexpr char kHidFamily[] = "CpdHid";

}  // namespace qvn::ipv4
