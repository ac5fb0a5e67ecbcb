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
#include "usb/device.h"
#include "usb/usbip_server.h"

namespace sim {

// What can be said, one command a line.
inline constexpr char kCommandHelp[] =
    "  alert HEX            send a packet to the hosts that asked for its kind of alert\n"
    "  send HEX             send any bytes to every host\n"
    "  status BYTE [WORD]   set the status and raise an alert for it\n"
    "  power-on-reset       forget locks and registrations, and raise the alert for it\n"
    "  button N             press a button and let it go\n"
    "  report HEX           send a report of any bytes\n"
    "  reports N            send so many numbered reports\n"
    "  event ID [CATEGORY]  send an event\n"
    "  load N               put so many sheets into the feeder\n"
    "  block HEX            send a block to every host on the scan port of a BpdPrinter\n"
    "  unplug, plug         pull the device off USB, and plug it again\n"
    "  fault NAME[=VALUE]   have a fault\n"
    "  clear-faults         have none any more\n"
    "  help                 print this\n"
    "  quit                 end\n";

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
    usb::Device& usb;
    usb::UsbipServer& usbip;
  };

  explicit CommandInterpreter(const Device& device) : device_(device) {}

  // What the command has to tell; nothing for most. Throws std::invalid_argument with a sentence for the
  // user.
  std::string run(std::string_view line);

 private:
  bool runPrinterCommand(std::string_view command, const std::string& argument);
  bool runUsbCommand(std::string_view command);
  bool runScannerCommand(std::string_view command, const std::string& argument);

  const Device device_;
};

// A number as people write it, also 0x4000; throws std::invalid_argument when it is none or above `largest`.
std::uint32_t parseNumber(std::string_view text, std::uint32_t largest);

}  // namespace sim
