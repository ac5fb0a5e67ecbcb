// The verbs. Each function adds one to the command line, with its arguments, its help and what it does.
#pragma once

namespace qvn::cli {

class Verb;

void addInstallCommand(Verb& root);
void addUninstallCommand(Verb& root);
void addMonitorCommand(Verb& root);
void addHostCommand(Verb& root);
void addTransportCommand(Verb& root);
void addDeviceCommand(Verb& root);
void addDiscoverCommand(Verb& root);
void addPrintCommand(Verb& root);
void addStatusCommand(Verb& root);
void addCacheCommand(Verb& root);
void addWatchCommand(Verb& root);
void addNpaCommand(Verb& root);
void addScanCommand(Verb& root);
void addEscCommand(Verb& root);
void addHidCommand(Verb& root);
void addStoreCommand(Verb& root);
void addAttributeCommands(Verb& root);
void addSettingsCommand(Verb& root);
void addRegistryCommand(Verb& root);
void addLogCommand(Verb& root);

}  // namespace qvn::cli
