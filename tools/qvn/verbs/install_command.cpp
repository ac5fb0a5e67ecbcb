// qvn install: sets the library up on this machine.
#include <cerrno>
#include <cstring>
#include <fstream>
#include <memory>
#include <system_error>

#include "library_settings.h"
#include "platform/base/error.h"
#include "platform/files/paths.h"
#include "qvn/qvn.h"
#include "registered_transports.h"
#include "shared/client/failure.h"
#include "shared/client/session.h"
#include "shared/registry-script/registry_script.h"
#include "verbs/commands.h"
#include "verbs/quiet.h"
#include "verbs/verb.h"

namespace qvn::cli {

namespace {

// The library reports nothing of the script that it has imported, so it is looked at before.
void checkScript() {
  std::string path;
  require(platform::systemDirectory(path), "cannot make the system directory");
  const std::filesystem::path file = findRegistryScript(path + "\\qr__.loc");
  try {
    std::ifstream in(file, std::ios::binary);
    if (!in) {
      throw std::system_error(errno, std::generic_category());
    }
    parseRegistryScript(readRegistryScript(in));
  } catch (const RegistryScriptError& error) {
    throw Failure(file.string() + ": " + error.what() + "; nothing was installed");
  } catch (const std::system_error& error) {
    throw Failure("cannot read the registry script '" + file.string() + "': " + error.code().message());
  }
}

void install(bool quiet) {
  checkScript();
  platform::ErrorCode notInstalled = platform::kSuccess;
  {
    const Session session;  // for the log
    QvnInstall();
    notInstalled = platform::lastError();
  }
  platform::registry::Key root;
  require(platform::registry::openKey(platform::registry::Hive::LocalMachine, libraryKey(""), root),
          "the registry script was not imported");
  std::string names;
  for (const RegisteredTransport& transport : registeredTransports()) {
    requireLoadable(transport);
    names += (names.empty() ? "" : ", ") + transport.name;
  }
  require(notInstalled, "a transport is registered, but not installed");
  say(quiet, "the library is set up; transports: " + (names.empty() ? "none" : names));
}

}  // namespace

void addInstallCommand(Verb& root) {
  Verb verb = root.addVerb("install", "Set the library up: settings, transports");
  verb.footer(
      "Imports the registry script qr__.loc and installs the transports that are registered then. The "
      "script\n"
      "is the one in the system directory below QVN_HOME, or the one that came with the library. Settings\n"
      "that are there already stay, and so do transports that could not be installed.\n\n"
      "Examples:\n"
      "  qvn install");
  const auto quiet = std::make_shared<bool>(false);
  addQuiet(verb, *quiet);
  verb.callback([quiet] { install(*quiet); });
}

}  // namespace qvn::cli
