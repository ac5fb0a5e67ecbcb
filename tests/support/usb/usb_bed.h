// A machine with one USB bus, for tests: sysfs, udev's events and device nodes as libusb finds them, with
// scripted or simulated devices behind them. Suites made with qvn_add_usb_suite() run on it, and programs
// started with its environment().
//
// There is one at a time in a process, and it outlives every libusb context. Its functions are for one
// thread.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "support/usb/scripted_device.h"

namespace qvn::test {

class UsbBed {
 public:
  UsbBed();
  ~UsbBed();
  UsbBed(const UsbBed&) = delete;
  UsbBed& operator=(const UsbBed&) = delete;

  // Plugs a device into a port of the root hub, and tells whoever listens. Every time it gets another number,
  // as the kernel gives it. The scripted device stays until it is unplugged.
  void plug(ScriptedDevice& device, const std::string& port = "1-1");
  // The device that a USB/IP server on this machine exports.
  void plug(std::uint16_t serverPort, const std::string& port = "1-1", const std::string& busId = "1-1");

  // All openings of the device end, in other processes within a moment.
  void unplug(const std::string& port = "1-1");

  // The device's node, "/dev/bus/usb/001/002".
  std::string node(const std::string& port = "1-1") const;

  // Lets the kernel's printer driver have an interface until it is disconnected. Gives its node,
  // "/dev/usb/lp0", which one opening at a time can have: who opens it meanwhile gets EBUSY.
  std::string bindUsblp(unsigned interface = 0, const std::string& port = "1-1");

  // What a program needs to run on the bed; simulated devices only, scripted ones cannot be opened there.
  // `runtime` is what has to be loaded even before, such as a sanitizer's runtime for a program built without
  // it.
  std::vector<std::pair<std::string, std::string>> environment(const std::string& runtime = "") const;

 private:
  struct Plugged {
    unsigned number;
    std::string sysPath;                  // "/sys/devices/..."
    std::vector<std::string> interfaces;  // the last parts of their paths
    std::string localName;                // of a scripted device
  };
  class Tree;

  Plugged& at(const std::string& port);
  // The number of the device that is plugged in there now.
  unsigned take(const std::string& port);
  // Ends this process's openings.
  void kill(const Plugged& plugged) const;
  std::string path(const std::string& below) const;
  void add(const std::string& port, const std::string& line, const Bytes& descriptors,
           const std::vector<std::string>& strings, unsigned number);

  std::unique_ptr<Tree> tree_;
  unsigned lastNumber_ = 1;  // the root hub's
  unsigned lastPrinter_ = 0;
  std::map<std::string, Plugged> plugged_;
};

}  // namespace qvn::test
