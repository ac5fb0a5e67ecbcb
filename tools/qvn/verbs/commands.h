// The verbs. Each function adds one to the command line, with its arguments, its help and what it does.
#pragma once

namespace CLI {
class App;
}

namespace qvn::cli {

void addInstallCommand(CLI::App& app);
void addUninstallCommand(CLI::App& app);
void addMonitorCommand(CLI::App& app);
void addHostCommand(CLI::App& app);
void addTransportCommand(CLI::App& app);
void addDeviceCommand(CLI::App& app);
void addDiscoverCommand(CLI::App& app);
void addPrintCommand(CLI::App& app);
void addStatusCommand(CLI::App& app);
void addCacheCommand(CLI::App& app);
void addWatchCommand(CLI::App& app);
void addNpaCommand(CLI::App& app);
void addScanCommand(CLI::App& app);
void addEscCommand(CLI::App& app);
void addHidCommand(CLI::App& app);
void addStoreCommand(CLI::App& app);
void addAttributeCommands(CLI::App& app);
void addSettingsCommand(CLI::App& app);
void addRegistryCommand(CLI::App& app);
void addLogCommand(CLI::App& app);

}  // namespace qvn::cli
