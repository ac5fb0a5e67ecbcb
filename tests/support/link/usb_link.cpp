#include <cstdlib>
#include <utility>

#include "support/link/device_link.h"
#include "support/process/successful_run.h"
#include "support/usb/usb_bed.h"

namespace qvn::test {

struct DeviceLink::Bus {
  UsbBed bed;
  bool isPlugged = false;
};

DeviceLink::DeviceLink() : bus_(std::make_unique<Bus>()) {}
DeviceLink::~DeviceLink() = default;

std::unique_ptr<SimulatorProcess> DeviceLink::start(std::vector<std::string> arguments) {
  arguments.emplace_back("--usb=0");
  return std::make_unique<SimulatorProcess>(std::move(arguments));
}

void DeviceLink::connect(const SimulatorProcess& device) {
  if (std::exchange(bus_->isPlugged, true)) bus_->bed.unplug();
  bus_->bed.plug(device.readyLine().at("usb").get<std::uint16_t>());
  // For the programs that the test starts from now on.
  for (const auto& [name, value] : bus_->bed.environment()) setenv(name.c_str(), value.c_str(), 1);
  ok({"transport", "add", "qvn_usb1.so"});
  ok({"discover", "--transport", "USB1"});
}

bool DeviceLink::servesSeveralHosts() { return false; }
// Packets take the same way between the transfers.
std::string DeviceLink::slowestPrint() { return "slow-print=400000"; }
std::string DeviceLink::breaksAfter(std::size_t bytes) {
  return "usb-unplug=" + std::to_string(bytes) + ":1";
}

std::string DeviceLink::portname(const std::string& serial) { return "USB_" + serial; }
std::string DeviceLink::printerHandle() { return "20001"; }
std::string DeviceLink::scannerHandle() { return "20401"; }

}  // namespace qvn::test
