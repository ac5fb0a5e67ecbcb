// Finds devices: by asking addresses over UDP, and among the services that the network announces.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "discovery/device_answer.h"
#include "discovery/device_question.h"
#include "discovery/service_searches.h"
#include "discovery/services.h"
#include "net/endpoint.h"
#include "qvn/transport/discoverer.h"

namespace qvn::ipv4 {

// Asks all places side by side, and the mDNS daemon at the same time, for the setting
// "9200UnicastDiscoveryTimeout" at most. A device is known by its serial number: it keeps its handle wherever
// it answers from. Its scanner and its HID are told after it, as devices of their own. Of two that claim the
// same serial number in one discovery the first one counts, and an answer counts more than an announcement.
class IpDiscoverer : public Discoverer {
 public:
  // The options are a search text (search_text.h); an empty one stands for the defaults and the announced
  // services. 0, also when nobody answers; 87 for a text that cannot be understood.
  std::uint32_t discover(const std::string& options) override;

  // Asks the device where the text says it is, then all places of the defaults. A device that does not answer
  // questions (without "UdpPort") is looked for by the service that announced it; where there is none it is
  // told again as the text describes it, "Unverified" no more, if it accepts a connection on its print port.
  //
  // 87 when the text does not say where the device is, 1460 when nothing answers there, 1168 when another
  // device does, 1225 and the like for a print port that nobody can connect to.
  std::uint32_t discoverSpecific(const std::string& deviceAttributes) override;

  // The search text that stands for empty options; empty itself until set, which asks nobody. Setting it:
  // 0, 87 for a text that cannot be understood, or the registry's code.
  std::uint32_t getDefaults(char* buffer, std::uint32_t size, std::uint32_t* required) override;
  std::uint32_t setDefaults(const char* defaults) override;

  // Waits for what discoveries have left running.
  void finish() { serviceSearches_.join(); }

 private:
  std::uint32_t findAnsweringDevice(const Endpoint& lastPlace, const std::string& serial);
  std::uint32_t findAnnouncedDevice(const std::string& deviceAttributes, const Endpoint& printPort);

  std::uint32_t tell(const AnsweringDevice& device);
  std::uint32_t tell(const Service& service, const DeviceAnswer& described);

  ServiceSearches serviceSearches_;
};

}  // namespace qvn::ipv4
