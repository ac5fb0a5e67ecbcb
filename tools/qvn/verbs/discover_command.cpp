// qvn discover: finds devices and stores them.
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "registered_transports.h"
#include "shared/client/devices.h"
#include "shared/client/failure.h"
#include "verbs/commands.h"
#include "verbs/verb.h"

namespace qvn::cli {

namespace {

struct Options {
  std::string transport = "ALL_TRANSPORT";
  std::string text;
  bool json = false;
};

void discover(const Options& options) {
  const Session session;
  require(QvnDiscovery(session.client(), options.transport.c_str(), options.text.c_str()),
          "the discovery over " + options.transport + " failed");
  Json devices = Json::array();
  for (const DeviceKind& kind : deviceKinds()) {
    for (const Device& device : listDevices(session, kind, options.transport)) {
      devices.push_back(describeDevice(session, device));
    }
  }
  printDevices(devices, options.json);
  // To the library a transport that cannot be loaded is one without devices.
  for (const RegisteredTransport& transport : registeredTransports(options.transport)) {
    requireLoadable(transport.module);
  }
}

}  // namespace

void addDiscoverCommand(Verb& root) {
  const auto options = std::make_shared<Options>();
  Verb verb = root.addVerb("discover", "Find devices, store them and list what is stored then");
  verb.addOption("--transport", options->transport,
                 "A transport's name, LOCAL_TRANSPORT, NETWORK_TRANSPORT or ALL_TRANSPORT")
      .showDefault();
  verb.addOption("OPTIONS", options->text, "What to look for, in the words of the transport");
  verb.addFlag("--json", options->json, "Print JSON");
  verb.footer(
      "Examples:\n"
      "  qvn discover\n"
      "  qvn discover --transport IPv4 192.0.2.17\n"
      "  qvn discover --transport IPv4 192.0.2.20-192.0.2.40,dns-sd\n"
      "  qvn discover --transport IPv4 127.0.0.1:9100 --json");
  verb.callback([options] { discover(*options); });
}

}  // namespace qvn::cli
