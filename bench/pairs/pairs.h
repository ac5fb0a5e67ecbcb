// The families of pairs. Each puts its rows into the table.
#pragma once

#include <cstdint>

#include "installation.h"
#include "peers/alert_source.h"
#include "peers/byte_sink.h"
#include "peers/hid_source.h"
#include "peers/scan_source.h"
#include "ratio_table.h"

namespace qvn::bench {

// Handles of the devices that the families open.
inline constexpr std::uint32_t kFastPrinter = 1;
inline constexpr std::uint32_t kSlowPrinter = 2;
inline constexpr std::uint32_t kAlertingPrinter = 3;
inline constexpr std::uint32_t kFastScanner = 401;
inline constexpr std::uint32_t kBusyHid = 801;

// Printing: direct path, memory, buffered path. The sinks take the print data.
void measurePrinting(const Installation& installation, ByteSink& fast, ByteSink& slow, RatioTable& table);

// Exchanges with the devices behind kFastPrinter and kFastScanner, whose ports for them are these.
void measureExchanges(const Installation& installation, std::uint16_t bidiPort, std::uint16_t scanPort,
                      RatioTable& table);

// Pages of the scanner behind kFastScanner.
void measureScanning(const Installation& installation, const ScanSource& source, RatioTable& table);

// Reports of the HID behind kBusyHid.
void measureHids(const Installation& installation, const HidSource& source, RatioTable& table);

// Alerts of the device behind kAlertingPrinter.
void measureAlerts(const Installation& installation, AlertSource& source, RatioTable& table);

// Listings and look-ups among many stored printers.
void measureEnumeration(const Installation& installation, RatioTable& table);

// Discovery of devices that it starts itself.
void measureDiscovery(const Installation& installation, RatioTable& table);

// Calls that touch no device, among many stored printers.
void measureCalls(const Installation& installation, RatioTable& table);

}  // namespace qvn::bench
