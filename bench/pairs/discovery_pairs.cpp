// Discovering many devices at once, against the one of them that takes longest to answer.
#include <algorithm>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "measure.h"
#include "pairs/pairs.h"
#include "qvn/qvn.h"
#include "support/simulator/simulator_process.h"

namespace qvn::bench {
namespace {

constexpr std::uint32_t kDevices = 50;
// Apart from each other by that much, so that only asking them side by side is quick: the slowest takes 250
// ms, all one after the other take more than 6 s.
constexpr std::uint32_t kStepMilliseconds = 5;

std::uint32_t found = 0;
void count(std::uint32_t, std::uint32_t) { ++found; }

Seconds discover(std::uint32_t client, const std::string& places) {
  return timeOf([&] { require(QvnDiscovery(client, "IPv4", places.c_str()), "QvnDiscovery"); });
}

}  // namespace

void measureDiscovery(const Installation& installation, RatioTable& table) {
  std::vector<std::unique_ptr<test::SimulatorProcess>> devices;
  std::string places;
  std::string slowest;
  for (std::uint32_t i = 1; i <= kDevices; ++i) {
    devices.push_back(std::make_unique<test::SimulatorProcess>(
        std::vector<std::string>{"--discard", "--quit-on-eof", "--serial", "MANY" + std::to_string(i),
                                 "--fault", "slow-discovery=" + std::to_string(i * kStepMilliseconds)}));
    slowest = devices.back()->address() + ":" + std::to_string(devices.back()->discoveryPort());
    places += (places.empty() ? "" : ",") + slowest;
  }
  const std::uint32_t client = installation.client();
  const Ratio ratio =
      medianRatio([&] { return discover(client, places); }, [&] { return discover(client, slowest); });
  found = 0;
  require(QvnEnumPrinters(client, "IPv4", nullptr, count), "QvnEnumPrinters");
  if (found < kDevices) throw std::runtime_error("the discovery missed devices");
  table.atMost("discovery: 50 devices that answer within 250 ms / the slowest of them",
               "a network of printers is found in the time of its slowest one", 2, ratio);
}

}  // namespace qvn::bench
