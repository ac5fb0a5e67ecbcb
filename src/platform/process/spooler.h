// The print spooler: its local queues, and the print monitors registered with it.
#pragma once

#include <string>
#include <vector>

#include "platform/base/error.h"
#include "platform/base/export.h"

namespace qvn::platform {

struct PrintQueue {
  std::string printerName;
  // A queue is shared under its own name.
  std::string shareName;
  // NAME of a device URI "qvn://NAME" or "qvn:NAME", percent-decoded; any other URI as a whole.
  std::string portName;
};

// The queues of this machine, those of CUPS: neither classes nor queues that others share with it. Which
// server is asked is CUPS's own business (CUPS_SERVER, client.conf). 1722 when there is no libcups, or no
// server answers within five seconds; `queues` is empty then.
QVN_PLATFORM_API ErrorCode localPrintQueues(std::vector<PrintQueue>& queues);

// The event (manual reset) that a print monitor sets when it starts.
inline constexpr char kMonitorStartEvent[] = "qr__printmonitor";

struct PrintMonitor {
  std::string name;
  std::string environment;  // empty: the spooler's own
  std::string module;
};

// Records the monitor. 3006 when one of that name is recorded; 87 for a name or module that is empty, a name
// with a backslash or one that is too long; else the registry's code. The spooler of this system loads no
// monitor modules, so the start event is set in the monitor's place.
QVN_PLATFORM_API ErrorCode addPrintMonitor(const PrintMonitor& monitor);

}  // namespace qvn::platform
