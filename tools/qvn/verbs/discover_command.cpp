// qvn discover: finds devices and stores them.
#include <algorithm>
#include <iostream>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>

#include "discovery_places.h"
#include "qvn/transport/attributes.h"
#include "registered_transports.h"
#include "shared/client/devices.h"
#include "shared/client/failure.h"
#include "verbs/commands.h"
#include "verbs/quiet.h"
#include "verbs/verb.h"

namespace qvn::cli {

namespace {

struct Options {
  std::string transport = "ALL_TRANSPORT";
  std::vector<std::string> places;
  bool json = false;
};

std::vector<Device> stored(const Session& session, const std::string& transport) {
  std::vector<Device> devices;
  for (const DeviceKind& kind : deviceKinds()) {
    const auto ofKind = listDevices(session, kind, transport);
    devices.insert(devices.end(), ofKind.begin(), ofKind.end());
  }
  return devices;
}

// What a transport changes each time that it finds the device; empty where it does not.
std::string lastFound(const Session& session, const Device& device) {
  return readText(session, device, attribute::kTickCount);
}

// The devices before a discovery, which tell afterwards which of them it has found.
class Before {
 public:
  Before(const Session& session, const std::string& transport) : session_(session) {
    for (const Device& device : stored(session, transport)) {
      lastFound_[device.text()] = lastFound(session, device);
    }
  }

  bool wasFound(const Device& device) const {
    const auto before = lastFound_.find(device.text());
    const std::string now = lastFound(session_, device);
    return before == lastFound_.end() || now.empty() || now != before->second;
  }

 private:
  const Session& session_;
  std::map<std::string, std::string> lastFound_;
};

std::string silence(const Place& place) {
  const std::string sentence = "nothing answered at " + place.text;
  return place.port != 0 ? sentence +
                               "; the port is that of discovery (UDP, 9200 where nothing else is set), not "
                               "the print port"
                         : sentence;
}

void discover(const Options& options) {
  const auto transports = requireTransports(options.transport);
  // To the library a transport that cannot be loaded is one without devices.
  for (const RegisteredTransport& transport : transports) requireLoadable(transport);
  const std::vector<Place> places = parsePlaces(options.places);
  std::string text;
  for (const Place& place : places) text += (text.empty() ? "" : ",") + place.text;

  const Session session;
  const Before before(session, options.transport);
  std::string failures;
  for (const RegisteredTransport& transport : transports) {
    // Where to look is said of the network; what is plugged in is found all the same.
    const bool isLocal = transport.kind == "LOCAL_TRANSPORT";
    const std::string& where = isLocal && transports.size() > 1 ? std::string() : text;
    const std::uint32_t result = QvnDiscovery(session.client(), transport.name.c_str(), where.c_str());
    if (result == QRN_ERROR_INVALID_PARAMETER && !where.empty()) {
      throw UsageError("'" + text + "' is no place to look at: an address as 192.0.2.17, a range as " +
                       "192.0.2.20-192.0.2.40, the name of a host that is known here, or dns-sd");
    }
    if (result == QRN_ERROR_SUCCESS) continue;
    const Failure failure("the discovery over " + transport.name + " failed", result, transport.name);
    failures += (failures.empty() ? "" : "\nqvn: ") + std::string(failure.what());
  }

  const std::vector<Device> devices = stored(session, options.transport);
  Json listing = Json::array();
  for (const Device& device : devices) listing.push_back(describeDevice(session, device));
  printDevices(listing, options.json);
  std::cout.flush();
  if (devices.empty() && places.empty() && failures.empty() && !options.json) {
    hint("no device is stored: plug one in, or say where to look, for example 192.0.2.17");
  }

  std::string silent = std::move(failures);
  for (const Place& place : places) {
    const auto answered = [&](const Device& device) {
      const std::uint32_t port = readNumber(session, device, attribute::kUdpPort);
      return place.contains(readText(session, device, attribute::kAddress), port) && before.wasFound(device);
    };
    if (place.last == 0 || std::any_of(devices.begin(), devices.end(), answered)) continue;
    silent += (silent.empty() ? "" : "\nqvn: ") + silence(place);
  }
  if (!silent.empty()) throw Failure(silent);
}

}  // namespace

void addDiscoverCommand(Verb& root) {
  const auto options = std::make_shared<Options>();
  Verb verb = root.addVerb("discover", "Find devices, store them and list what is stored then");
  verb.addOption("--transport", options->transport,
                 "A transport's name, LOCAL_TRANSPORT, NETWORK_TRANSPORT or ALL_TRANSPORT")
      .showDefault();
  verb.addOption(
      "PLACE", options->places,
      "Where to look: addresses, ranges of them, host names, dns-sd for what the network announces; "
      "otherwise where the transport looks by itself");
  verb.addJson(options->json);
  verb.footer(
      "A port behind an address is the one that answers the question (UDP), not the one that takes print\n"
      "data; without it the transport's own is asked, 9200 for IPv4.\n\n"
      "Examples:\n"
      "  qvn discover\n"
      "  qvn discover --transport IPv4 192.0.2.17\n"
      "  qvn discover --json 192.0.2.18:9300 192.0.2.20-192.0.2.40");
  verb.callback([options] { discover(*options); });
}

}  // namespace qvn::cli
