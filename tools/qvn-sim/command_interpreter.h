// Carries out the commands that people and scripts give the device.
#pragma once

#include <string>
#include <string_view>

#include "documents/object_port.h"
#include "esc/scanner.h"
#include "faults/fault_switches.h"
#include "hid/hid_port.h"
#include "net/event_loop.h"
#include "page/scan_engine.h"
#include "print/bidi_port.h"
#include "print/printer.h"

namespace sim {

class CommandInterpreter {
 public:
  struct Device {
    EventLoop& loop;
    FaultSwitches& faults;
    Printer& printer;
    BidiPort& bidi;
    Scanner& scanner;
    ScanEngine& engine;
    ObjectPort& objects;
    HidPort& hid;
    bool hasScanner;
  };

  explicit CommandInterpreter(const Device& device) : device_(device) {}

  // Throws std::invalid_argument with a sentence for the user.
  void run(std::string_view line);

 private:
  bool runPrinterCommand(std::string_view command, const std::string& argument);
  bool runScannerCommand(std::string_view command, const std::string& argument);

  const Device device_;
};

// A number as people write it, also 0x4000; throws std::invalid_argument when it is none or above `largest`.
std::uint32_t parseNumber(std::string_view text, std::uint32_t largest);

}  // namespace sim
