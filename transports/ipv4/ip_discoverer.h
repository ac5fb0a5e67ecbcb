// Finds devices by asking addresses over UDP.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "device_answer.h"
#include "qvn/transport/discoverer.h"
#include "tcp_socket.h"

namespace qvn::ipv4 {

// Asks all places side by side and waits once, for the setting "9200UnicastDiscoveryTimeout", less when all
// have answered. A device is known by its serial number: it keeps its handle wherever it answers from. Of two
// that claim the same serial number in one discovery the first one counts.
class IpDiscoverer : public Discoverer {
 public:
  // The options are a search text (search_text.h); an empty one stands for the defaults. 0, also when nobody
  // answers; 87 for a text that cannot be understood.
  std::uint32_t discover(const std::string& options) override;

  // 87 when the text does not say where the device is, 1460 when nothing answers there, 1168 when another
  // device does.
  std::uint32_t discoverSpecific(const std::string& deviceAttributes) override;

  // The search text that stands for empty options; empty itself until set, which finds nothing. Setting it:
  // 0, 87 for a text that cannot be understood, or the registry's code.
  std::uint32_t getDefaults(char* buffer, std::uint32_t size, std::uint32_t* required) override;
  std::uint32_t setDefaults(const char* defaults) override;

 private:
  struct Found {
    Endpoint place;
    DeviceAnswer answer;
  };

  static std::uint32_t ask(const std::vector<Endpoint>& places, std::vector<Found>& found);
  std::uint32_t tell(const Found& device);
};

}  // namespace qvn::ipv4
