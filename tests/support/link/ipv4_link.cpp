#include "support/link/device_link.h"
#include "support/process/successful_run.h"

namespace qvn::test {

struct DeviceLink::Bus {};

DeviceLink::DeviceLink() = default;
DeviceLink::~DeviceLink() = default;

std::unique_ptr<SimulatorProcess> DeviceLink::start(std::vector<std::string> arguments) {
  return std::make_unique<SimulatorProcess>(std::move(arguments));
}

void DeviceLink::connect(const SimulatorProcess& device) {
  ok({"transport", "add", "qvn_ipv4.so"});
  ok({"discover", "--transport", "IPv4", device.place()});
}

bool DeviceLink::servesSeveralHosts() { return true; }
std::string DeviceLink::slowestPrint() { return "slow-print=0"; }
std::string DeviceLink::breaksAfter(std::size_t bytes) {
  return "close-mid-job=" + std::to_string(bytes) + ":1";
}

std::string DeviceLink::portname(const std::string& serial) { return "IP_" + serial; }
std::string DeviceLink::printerHandle() { return "40001"; }
std::string DeviceLink::scannerHandle() { return "40401"; }

}  // namespace qvn::test
