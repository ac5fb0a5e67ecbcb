// qvn: the library from the command line.
#include <exception>
#include <iostream>

#include "shared/client/failure.h"
#include "shared/client/leave.h"
#include "shared/client/standard_output.h"
#include "verbs/commands.h"
#include "verbs/verb.h"

namespace {

constexpr char kFooter[] =
    "Exit codes:\n"
    "  0    success\n"
    "  1    the operation failed; the message ends in its result code\n"
    "  2    the command line is wrong\n"
    "  130  interrupted by SIGINT, SIGTERM or SIGHUP\n"
    "\n"
    "Environment:\n"
    "  QVN_HOME            the directory of registry and log (default /var/lib/qvn for root,\n"
    "                      else qvn below XDG_STATE_HOME)\n"
    "  QVN_DEVICE          the device that is meant where --device is not said\n"
    "  QVN_TRANSPORT_PATH  where transport modules are looked for first, separated by colons\n"
    "\n"
    "'qvn help VERB' explains a verb.\n"
    "\n"
    "Start with:\n"
    "  qvn install\n"
    "  qvn discover --transport IPv4 192.0.2.17\n"
    "  qvn print document.prn";

int complain(const std::exception& error, int exitCode) {
  std::cout.flush();
  std::cerr << "qvn: " << error.what() << "\n";
  return exitCode;
}

int run(int argc, char** argv) {
  qvn::cli::CommandLine commandLine("qvn", "Printers, scanners and HIDs through transport plug-ins.",
                                    "qvn " QVN_VERSION);
  qvn::cli::Verb root = commandLine.root();
  root.footer(kFooter);
  qvn::cli::addInstallCommand(root);
  qvn::cli::addUninstallCommand(root);
  qvn::cli::addTransportCommand(root);
  qvn::cli::addDeviceCommand(root);
  qvn::cli::addDiscoverCommand(root);
  qvn::cli::addPrintCommand(root);
  qvn::cli::addStatusCommand(root);
  qvn::cli::addCacheCommand(root);
  qvn::cli::addWatchCommand(root);
  qvn::cli::addNpaCommand(root);
  qvn::cli::addScanCommand(root);
  qvn::cli::addEscCommand(root);
  qvn::cli::addHidCommand(root);
  qvn::cli::addStoreCommand(root);
  qvn::cli::addAttributeCommands(root);
  qvn::cli::addHostCommand(root);
  qvn::cli::addMonitorCommand(root);
  qvn::cli::addSettingsCommand(root);
  qvn::cli::addRegistryCommand(root);
  qvn::cli::addLogCommand(root);
  try {
    commandLine.run({argv + 1, argv + argc});
  } catch (const qvn::cli::UsageError& error) {
    return complain(error, qvn::cli::kWrongUsageExit);
  } catch (const qvn::cli::Interrupted& error) {
    return complain(error, qvn::cli::kInterruptedExit);
  } catch (const std::exception& error) {
    return complain(error, qvn::cli::kFailedExit);
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  qvn::cli::keepStandardOutput();
  const int exitCode = run(argc, argv);
  if (!std::cout.flush()) {
    std::cerr << "qvn: cannot write to standard output\n";
    return qvn::cli::kFailedExit;
  }
  return exitCode;
}
