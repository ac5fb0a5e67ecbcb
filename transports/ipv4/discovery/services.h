// Printers that the network announces: the services of the type "_pdl-datastream._tcp" (DNS-SD, RFC 6763),
// which take print data on a TCP port and nothing else.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "discovery/device_answer.h"
#include "net/endpoint.h"

namespace qvn::ipv4 {

// What is announced is what anybody on the network says: any bytes of any length.
struct Service {
  std::string name;
  Endpoint place;                            // where it takes print data
  std::map<std::string, std::string> texts;  // of its TXT record, by key in lower case
};

// The device that announces itself so, as a plain BpdPrinter. Nothing when it cannot be told apart, or has no
// text that may get into an attribute text.
std::optional<DeviceAnswer> describeService(const Service& service);

using ServiceDeadline = std::chrono::steady_clock::time_point;

// The services that the machine's mDNS daemon knows or hears of until the deadline: the one of that name, or
// all with an empty one; each may be there several times. Nothing, and at once, where no such daemon runs or
// the transport was built without it. May take longer where one runs that does not answer.
std::vector<Service> findServices(const std::string& name, ServiceDeadline deadline);

}  // namespace qvn::ipv4
