// What the library knows this transport and the parts of its devices by.
#pragma once

namespace qvn::ipv4 {

inline constexpr char kTransportName[] = "IPv4";
inline constexpr char kTransportKind[] = "NETWORK_TRANSPORT";

// Beside the printers, which tell their family themselves.
inline constexpr char kScannerFamily[] = "CpdScanner";
inline constexpr char kHidFamily[] = "CpdHid";

}  // namespace qvn::ipv4
