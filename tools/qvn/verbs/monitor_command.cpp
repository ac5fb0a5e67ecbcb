// qvn monitor: the print monitor.
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

void add(bool quiet) {
  if (!readLibraryValue("Runtime\\", "DefaultModelName")) {
    throw Failure(
        "the default model, after which the print monitor is named, has no name; 'qvn install' and "
        "'qvn settings set DefaultModelName NAME' give it one",
        QRN_ERROR_NOT_FOUND);
  }
  const Session session;
  const std::uint32_t result = QvnAddMonitor();
  if (result == QRN_ERROR_PRINT_MONITOR_ALREADY_INSTALLED || result == QRN_ERROR_ALREADY_EXISTS) {
    say(quiet, "the print monitor is registered already");
    return;
  }
  require(result, "cannot register the print monitor");
  say(quiet, "registered the print monitor");
}

}  // namespace

void addMonitorCommand(Verb& root) {
  Verb verb = root.addVerb("monitor", "Register the print monitor");
  verb.requireVerb();
  verb.footer(
      "Examples:\n"
      "  qvn monitor add");
  Verb addVerb = verb.addVerb("add", "Register the print monitor with the spooler");
  const auto quiet = std::make_shared<bool>(false);
  addQuiet(addVerb, *quiet);
  addVerb.footer("Example:\n  qvn monitor add");
  addVerb.callback([quiet] { add(*quiet); });
}

}  // namespace qvn::cli
