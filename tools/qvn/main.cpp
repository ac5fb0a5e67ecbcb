// qvn: the library from the command line.
#include <CLI/CLI.hpp>
#include <iostream>

#include "shared/client/failure.h"
#include "verbs/commands.h"

namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;
constexpr int kInterrupted = 130;

constexpr char kFooter[] =
    "Exit codes:\n"
    "  0    success\n"
    "  1    the operation failed; the message ends in its result code\n"
    "  2    the command line is wrong\n"
    "  130  interrupted by SIGINT or SIGTERM\n"
    "\n"
    "Environment:\n"
    "  QVN_HOME            the directory of registry and log (default /var/lib/qvn for root,\n"
    "                      else qvn below XDG_STATE_HOME)\n"
    "  QVN_TRANSPORT_PATH  where transport modules are looked for first, separated by colons\n"
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
  CLI::App app{"Printers, scanners and HIDs through transport plug-ins.", "qvn"};
  app.set_version_flag("--version", "qvn " QVN_VERSION, "Print the version and exit");
  app.set_help_flag("-h,--help", "Print this help and exit");
  app.require_subcommand(1);
  app.footer(kFooter);
  qvn::cli::addInstallCommand(app);
  qvn::cli::addUninstallCommand(app);
  qvn::cli::addTransportCommand(app);
  qvn::cli::addDeviceCommand(app);
  qvn::cli::addDiscoverCommand(app);
  qvn::cli::addPrintCommand(app);
  qvn::cli::addStatusCommand(app);
  qvn::cli::addCacheCommand(app);
  qvn::cli::addWatchCommand(app);
  qvn::cli::addNpaCommand(app);
  qvn::cli::addScanCommand(app);
  qvn::cli::addEscCommand(app);
  qvn::cli::addHidCommand(app);
  qvn::cli::addStoreCommand(app);
  qvn::cli::addAttributeCommands(app);
  qvn::cli::addHostCommand(app);
  qvn::cli::addMonitorCommand(app);
  qvn::cli::addSettingsCommand(app);
  qvn::cli::addRegistryCommand(app);
  qvn::cli::addLogCommand(app);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& request) {
    return app.exit(request);
  } catch (const CLI::ParseError& error) {
    complain(error, kWrongUsage);
    std::cerr << "Run 'qvn --help', or --help after a verb, for what can be said.\n";
    return kWrongUsage;
  } catch (const qvn::cli::UsageError& error) {
    return complain(error, kWrongUsage);
  } catch (const qvn::cli::Interrupted& error) {
    return complain(error, kInterrupted);
  } catch (const std::exception& error) {
    return complain(error, kFailed);
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const int exitCode = run(argc, argv);
  if (!std::cout.flush()) {
    std::cerr << "qvn: cannot write to standard output\n";
    return kFailed;
  }
  return exitCode;
}
