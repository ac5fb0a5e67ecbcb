// qvn transport: the registered transport modules.
#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>

#include "common/settings/setting_table.h"
#include "library_settings.h"
#include "qvn/qvn.h"
#include "registered_transports.h"
#include "shared/client/failure.h"
#include "shared/client/output.h"
#include "shared/client/session.h"
#include "verbs/commands.h"
#include "verbs/verb.h"

namespace qvn::cli {

namespace {

bool isRegistered(const std::string& nameOrModule) {
  const auto transports = registeredTransports();
  return std::any_of(transports.begin(), transports.end(), [&](const RegisteredTransport& transport) {
    return transport.name == nameOrModule || transport.module == nameOrModule;
  });
}

void add(const std::string& module) {
  const Session session;
  const std::uint32_t result = QvnAddTransport(module.c_str());
  if (result == QRN_ERROR_SUCCESS) {
    return;
  }
  requireLoadable(module);
  // Registering it comes first, and the library leaves it so.
  throw Failure("the transport module '" + module + "' " +
                    (isRegistered(module) ? "is registered, but not installed or not searched for devices"
                                          : "cannot be added"),
                result);
}

void remove(const std::string& name) {
  const Session session;
  if (!isRegistered(name)) {
    throw Failure("no transport '" + name + "' is registered", QRN_ERROR_NOT_FOUND);
  }
  // The library looks for a module of that name only when the keys of both kinds are there.
  for (const char* const key : {setting_key::kLocalTransports, setting_key::kNetworkTransports}) {
    makeLibraryKey(key);
  }
  // It goes on to look for a module of the same name, and answers how that went; what counts is
  // whether the registration is gone.
  const std::uint32_t result = QvnRemoveTransport(name.c_str());
  if (isRegistered(name)) {
    throw Failure("cannot remove the transport '" + name + "'", result);
  }
}

void list(bool json) {
  Json transports = Json::array();
  for (const RegisteredTransport& transport : registeredTransports()) {
    transports.push_back({{"name", transport.name}, {"kind", transport.kind}, {"module", transport.module}});
  }
  printListing(transports, {"name", "kind", "module"}, json);
}

}  // namespace

void addTransportCommand(Verb& root) {
  struct Options {
    std::string name;
    bool json = false;
  };
  const auto options = std::make_shared<Options>();
  Verb verb = root.addVerb("transport", "Add, remove and list transport modules");
  verb.requireVerb();
  verb.footer(
      "Examples:\n"
      "  qvn transport add qvn_ipv4.so\n"
      "  qvn transport list --json\n"
      "  qvn transport remove IPv4");

  Verb addVerb = verb.addVerb("add", "Register a module, install it and discover its devices");
  addVerb.addOption("MODULE", options->name, "The module's file name, or a path with a slash").required();
  addVerb.callback([options] { add(options->name); });

  Verb removeVerb = verb.addVerb("remove", "Take a registration away; stored devices stay");
  removeVerb.addOption("NAME", options->name, "The transport's name or its module's file name").required();
  removeVerb.callback([options] { remove(options->name); });

  Verb listVerb = verb.addVerb("list", "List the registered transports");
  listVerb.addFlag("--json", options->json, "Print JSON");
  listVerb.callback([options] { list(options->json); });
}

}  // namespace qvn::cli
