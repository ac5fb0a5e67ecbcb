// What the exported installation functions forward to.
#include <algorithm>
#include <memory>

#include "api/library_load.h"
#include "api/system.h"
#include "common/exception.h"
#include "common/logging/basic_logger.h"
#include "common/process/application.h"
#include "common/process/os_version.h"
#include "common/settings/application_settings.h"
#include "common/settings/localize.h"
#include "common/settings/registry_key.h"
#include "common/threads/event.h"
#include "platform/base/clock.h"
#include "platform/base/error.h"
#include "platform/files/paths.h"
#include "platform/process/spooler.h"
#include "platform/registry/registry.h"
#include "qvn/result_codes.h"
#include "transport/transports.h"

namespace qvn {
namespace {

constexpr platform::Milliseconds kImportTimeout = 15'000;
constexpr platform::Milliseconds kMonitorTimeout = 5000;

// Runs one step of what goes on whatever its steps come to; `function` names it in the log.
template <typename Step>
void attempt(const char* function, Step&& step) {
  try {
    step();
  } catch (const Win32Exception& exception) {
    logError(log_component::server(),
             [&] { return LogText() << function << " exception=" << exception.describe(); });
  } catch (...) {
    logError(log_component::server(), [&] { return LogText() << function << " failed"; });
  }
}

// Has the system's registry editor import the library's script. One that is late is left to go on by itself.
void importRegistryScript() {
  std::string directory;
  if (platform::systemDirectory(directory) != platform::kSuccess) return;
  const Localize& localize = Localize::getInstance();
  const RegistryKey brand(localize.getBrandRoot(), true, RegistryKey::kLocalMachine);
  platform::registry::flush();

  Application editor("regedit /s /i " + directory + "\\" + localize.getLocalId() + ".loc");
  editor.start();
  if (editor.waitFor(kImportTimeout)) return;
  logError(log_component::server(), [] { return LogText() << "System::qvnInstall() regedit does not end"; });
}

platform::PrintMonitor printMonitor() {
  std::string name = Localize::getInstance().getDefaultModelName() + " Port";
  std::replace(name.begin(), name.end(), '_', ' ');
  return {name, OsVersion::getInstance().isWin9xFamily() ? "W32X86" : "",
          Localize::getInstance().getLocalId() + "qzpm.dll"};
}

// The event that the monitor sets when it starts; none when it cannot be made.
std::unique_ptr<Event> startEvent() {
  try {
    auto event = std::make_unique<Event>(true, false, platform::kMonitorStartEvent, true);
    event->reset();
    return event;
  } catch (const Win32Exception& exception) {
    logError(log_component::printMonitor(), [&] {
      return LogText() << "System::qvnAddMonitor()"
                       << " exception=" << exception.describe();
    });
    return nullptr;
  }
}

}  // namespace

std::uint32_t System::qvnInstall() {
  Localize::createInstance(moduleHandle());
  attempt("System::qvnInstall()", importRegistryScript);
  std::uint32_t rc = QRN_ERROR_SUCCESS;
  attempt("System::qvnInstall()", [&] { rc = Transports::getInstance().installRegisteredTransports(); });
  return rc;
}

void System::qvnUninstall() {
  logDetail(log_component::server(), [] { return LogText() << "QvnUninstall()"; });
  BasicLogger::stop();
  Localize::createInstance(moduleHandle());
  attempt("System::qvnUninstall()", [] { Transports::getInstance().uninstallRegisteredTransports(); });
  attempt("System::qvnUninstall()", [] { ApplicationSettings().removeAll(); });
}

std::uint32_t System::qvnAddMonitor() {
  Localize::createInstance(moduleHandle());
  const platform::PrintMonitor monitor = printMonitor();
  const std::unique_ptr<Event> started = startEvent();
  const platform::ErrorCode result = platform::addPrintMonitor(monitor);
  if (result != QRN_ERROR_SUCCESS && result != QRN_ERROR_PRINT_MONITOR_ALREADY_INSTALLED &&
      result != QRN_ERROR_ALREADY_EXISTS) {
    logError(log_component::server(),
             [&] { return LogText() << "error installing Print Monitor code=" << result; });
    return result;
  }
  logDetail(log_component::comServer(), [] { return LogText() << "Print Monitor installed successfully"; });
  if (started && started->wait(kMonitorTimeout)) {
    logDetail(log_component::server(), [] {
      return LogText() << "System::qvnAddMonitor()"
                       << " PrintMonitor event wait succeeded";
    });
  }
  return result;
}

std::uint32_t System::qvnAddTransport(const std::string& moduleFileName) {
  const std::uint32_t rc = Transports::getInstance().addTransport(moduleFileName);
  return rc != QRN_ERROR_SUCCESS ? rc : Transports::getInstance().installTransport(moduleFileName);
}

std::uint32_t System::qvnRemoveTransport(const std::string& name) {
  return Transports::getInstance().removeTransport(name);
}

std::uint32_t System::qvnSuspend() { return QRN_ERROR_SUCCESS; }

std::uint32_t System::qvnResume() { return QRN_ERROR_SUCCESS; }

}  // namespace qvn
