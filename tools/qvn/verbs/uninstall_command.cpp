// qvn uninstall: takes the library off this machine.

#include <memory>

#include "library_settings.h"
#include "qvn/qvn.h"
#include "shared/client/failure.h"
#include "shared/client/session.h"
#include "verbs/commands.h"
#include "verbs/quiet.h"
#include "verbs/verb.h"

namespace qvn::cli {

namespace {

void uninstall(bool quiet) {
  {
    const Session session;  // for the log
    QvnUninstall();
  }
  platform::registry::Key root;
  const platform::ErrorCode left =
      platform::registry::openKey(platform::registry::Hive::LocalMachine, libraryKey(""), root);
  if (left == platform::kSuccess) {
    throw Failure("the library's settings could not be removed; 'qvn registry export' shows them");
  }
  say(quiet, "the library's settings and devices are gone");
}

}  // namespace

void addUninstallCommand(Verb& root) {
  Verb verb = root.addVerb("uninstall", "Take the library's settings and devices away");
  verb.footer(
      "Uninstalls the registered transports and deletes the settings, the registered transports and the\n"
      "stored devices, without asking. What installations share stays, unless the setting\n"
      "DeleteStoreOnUninstall is 1 and no other installation is left. 'qvn registry export FILE' keeps a\n"
      "copy of it all.\n\n"
      "Examples:\n"
      "  qvn uninstall");
  const auto quiet = std::make_shared<bool>(false);
  addQuiet(verb, *quiet);
  verb.callback([quiet] { uninstall(*quiet); });
}

}  // namespace qvn::cli
