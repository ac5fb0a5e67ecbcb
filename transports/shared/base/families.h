// The families of devices that a transport must tell apart. Printers tell theirs themselves.
#pragma once

namespace qvn::shared {

inline constexpr char kCpdPrinterFamily[] = "CpdPrinter";
inline constexpr char kBpdPrinterFamily[] = "BpdPrinter";
inline constexpr char kCpdScannerFamily[] = "CpdScanner";
inline constexpr char kBpdScannerFamily[] = "BpdScanner";
inline constexpr char kHidFamily[] = "CpdHid";

}  // namespace qvn::shared
