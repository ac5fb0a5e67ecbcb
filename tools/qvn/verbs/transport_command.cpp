// qvn transport: the registered transport modules.
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <system_error>

#include "qvn/qvn.h"
#include "registered_transports.h"
#include "shared/client/failure.h"
#include "shared/client/output.h"
#include "shared/client/session.h"
#include "verbs/commands.h"
#include "verbs/quiet.h"
#include "verbs/verb.h"

namespace qvn::cli {

namespace {

// The transport that is registered with that name or module.
std::optional<RegisteredTransport> findRegistered(const std::string& nameOrModule) {
  for (const RegisteredTransport& transport : registeredTransports()) {
    if (transport.name == nameOrModule || transport.module == nameOrModule) return transport;
  }
  return std::nullopt;
}

// A path holds for every program, wherever it was started; a bare file name is looked for where transports
// are.
std::string moduleNamed(const std::string& name) {
  if (name.find('/') == std::string::npos) return name;
  const std::filesystem::path path(name);
  std::error_code error;
  const auto directory = std::filesystem::canonical(path.parent_path(), error);
  return error ? std::filesystem::absolute(path).string() : (directory / path.filename()).string();
}

void add(const std::string& name, bool quiet) {
  const std::string module = moduleNamed(name);
  const Session session;
  const std::uint32_t result = QvnAddTransport(module.c_str());
  const auto registered = findRegistered(module);
  if (result == QRN_ERROR_SUCCESS && registered) {
    say(quiet, "added the transport " + registered->name + ", " + module);
    return;
  }
  requireLoadable(module);
  if (result == QRN_ERROR_SUCCESS) {
    throw Failure("the transport module '" + module + "' is neither a local nor a network transport");
  }
  // Registering it comes first, and the library leaves it so.
  throw Failure(
      "the transport module '" + module + "' " +
          (registered ? "is registered, but not installed or not searched for devices" : "cannot be added"),
      result);
}

void remove(const std::string& nameOrModule, bool quiet) {
  const Session session;
  const auto transport = findRegistered(moduleNamed(nameOrModule));
  if (!transport) {
    throw Failure("no transport '" + nameOrModule + "' is registered", QRN_ERROR_NOT_FOUND);
  }
  // By its name, since a module may be gone. The library goes on to look for a module of that name, and
  // answers how that went; what counts is whether the registration is gone.
  const std::uint32_t result = QvnRemoveTransport(transport->name.c_str());
  if (findRegistered(transport->name)) {
    throw Failure("cannot remove the transport '" + transport->name + "'", result);
  }
  say(quiet, "removed the transport " + transport->name + ", " + transport->module);
}

void list(bool json) {
  Json transports = Json::array();
  for (const RegisteredTransport& transport : registeredTransports()) {
    transports.push_back({{"name", transport.name}, {"kind", transport.kind}, {"module", transport.module}});
  }
  printListing(transports, {"name", "kind", "module"}, json);
  if (transports.empty() && !json) {
    hint("no transport is registered: 'qvn install' registers the usual ones, 'qvn transport add' any");
  }
}

}  // namespace

void addTransportCommand(Verb& root) {
  struct Options {
    std::string name;
    bool json = false;
    bool quiet = false;
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
  addQuiet(addVerb, options->quiet);
  addVerb.footer(
      "Examples:\n"
      "  qvn transport add qvn_ipv4.so\n"
      "  qvn transport add ./my_transport.so");
  addVerb.callback([options] { add(options->name, options->quiet); });

  Verb removeVerb = verb.addVerb("remove", "Take a registration away; stored devices stay");
  removeVerb.addOption("NAME", options->name, "The transport's name or its module's file name").required();
  addQuiet(removeVerb, options->quiet);
  removeVerb.footer("Example:\n  qvn transport remove IPv4");
  removeVerb.callback([options] { remove(options->name, options->quiet); });

  Verb listVerb = verb.addVerb("list", "List the registered transports");
  listVerb.addJson(options->json);
  listVerb.footer("Example:\n  qvn transport list --json");
  listVerb.callback([options] { list(options->json); });
}

}  // namespace qvn::cli
