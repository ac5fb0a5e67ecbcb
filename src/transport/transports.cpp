#include "transport/transports.h"

#include <algorithm>
#include <array>
#include <utility>

#include "common/clients/client_call.h"
#include "common/clients/operation_lock.h"
#include "common/clients/reaper.h"
#include "common/exception.h"
#include "common/logging/trace_scope.h"
#include "common/process/os_version.h"
#include "common/settings/setting_table.h"
#include "common/settings/settings_store.h"
#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "qvn/transport/plugin.h"
#include "transport/call_transport.h"
#include "transport/transport_names.h"

namespace qvn {

using namespace setting_key;

namespace {

constexpr std::uint32_t kLocalSelection = SettingsStore::kLocal;
constexpr std::size_t kInfoSize = 256;

// The key that a kind's transports are registered under; null for another kind.
const char* registrationKey(const std::string& kind) {
  if (kind == kLocalTransport) return kLocalTransports;
  if (kind == kNetworkTransport) return kNetworkTransports;
  return nullptr;
}

// A module for as long as a call needs it. Unloading waits for the module's threads, which nobody may do
// inside a callback.
class ModuleForNow {
 public:
  explicit ModuleForNow(const std::string& moduleName) : dll_(std::make_unique<TransportDll>(moduleName)) {}
  ~ModuleForNow() {
    if (ClientCall::isRunning()) Reaper::share(std::shared_ptr<TransportDll>(std::move(dll_)));
  }
  ModuleForNow(const ModuleForNow&) = delete;
  ModuleForNow& operator=(const ModuleForNow&) = delete;

  const TransportDll& operator*() const { return *dll_; }
  const TransportDll* operator->() const { return dll_.get(); }

 private:
  std::unique_ptr<TransportDll> dll_;
};

// The exception behind what `operation` says of it, and below it why a module was not loaded.
void logFailure(const std::string& operation, const Win32Exception& exception,
                std::uint32_t level = log_level::kError) {
  log(log_component::server(), level,
      [&] { return LogText() << operation << " exception=" << exception.describe(); });
  const auto* const notLoaded = dynamic_cast<const ModuleNotLoaded*>(&exception);
  if (notLoaded == nullptr) return;
  log(log_component::server(), level,
      [&] { return LogText() << operation << " reason=" << notLoaded->getDetail(); });
}

std::uint32_t callEntry(const TransportDll& dll, const char* entryPoint) {
  return callTransport(entryPoint, dll.entry<transport_entry::Install>(entryPoint));
}

}  // namespace

Transports::~Transports() {
  loaded_.clear();
  Reaper::getInstance().flush();
}

template <typename Service>
FromTransport<Service> Transports::fromTransport(const std::string& transport, const char* entryPoint,
                                                 const char* operation, Service& fallback) {
  try {
    auto dll = loadTransportDll(transport, true);
    if (dll == nullptr) return {nullptr, &fallback};
    Service* const service = callTransport(entryPoint, dll->entry<Service*()>(entryPoint));
    if (service != nullptr) return {std::move(dll), service};
    logError(log_component::server(), [&] {
      return LogText() << operation << " " << entryPoint << " of transport=" << transport << " gave nothing";
    });
  } catch (const CallbackRefusal&) {
    throw;
  } catch (const Win32Exception& exception) {
    logFailure(operation, exception);
  }
  return {nullptr, &fallback};
}

template <typename Service>
FromTransport<Service> Transports::fromDevice(const std::string& deviceAttributes, const char* entryPoint,
                                              const char* operation, Service& fallback) {
  std::string transport;
  if (AttributeCodec::getString(deviceAttributes, attribute::kTransport, transport) != QRN_ERROR_SUCCESS) {
    return {nullptr, &fallback};
  }
  return fromTransport(transport, entryPoint, operation, fallback);
}

FromTransport<ConnectionManager> Transports::getConnectionManager(const std::string& deviceAttributes) {
  return fromDevice<ConnectionManager>(deviceAttributes, transport_entry::kGetConnectionManager,
                                       "Transports::getConnectionManager()", fallbackConnectionManager_);
}

FromTransport<VisitorManager> Transports::getVisitorManager(const std::string& deviceAttributes) {
  return fromDevice<VisitorManager>(deviceAttributes, transport_entry::kGetVisitorManager,
                                    "Transports::getVisitorManager()", fallbackVisitorManager_);
}

FromTransport<Discoverer> Transports::getDiscoverer(const std::string& transport) {
  return fromTransport<Discoverer>(transport, transport_entry::kGetDiscoverer, "Transports::getDiscoverer()",
                                   fallbackDiscoverer_);
}

std::vector<std::string> Transports::getTransportNames(const std::string& kindOrName) const {
  std::vector<std::string> names;
  if (kindOrName == kAllTransport) {
    settings_.getValueNames(kLocalTransports, names, kLocalSelection);
    std::vector<std::string> network;
    settings_.getNetworkTransports(network);
    names.insert(names.end(), network.begin(), network.end());
  } else if (const char* const key = registrationKey(kindOrName)) {
    settings_.getValueNames(key, names, kLocalSelection);
  } else {
    names.push_back(kindOrName);
  }
  return names;
}

std::shared_ptr<TransportDll> Transports::findLoaded(const std::string& transport) {
  std::lock_guard<std::mutex> lock(loadedMutex_);
  const auto found = loaded_.find(transport);
  return found == loaded_.end() ? nullptr : found->second;
}

std::string Transports::registeredModule(const std::string& transport) const {
  std::string moduleName;
  if (!settings_.getString(kLocalTransports, transport, moduleName, kLocalSelection)) {
    settings_.getString(kNetworkTransports, transport, moduleName, kLocalSelection);
  }
  return moduleName;
}

std::shared_ptr<TransportDll> Transports::loadTransportDll(const std::string& transport, bool discover) {
  if (auto dll = findLoaded(transport)) return dll;
  try {
    const std::string moduleName = registeredModule(transport);
    if (moduleName.empty()) return nullptr;
    const OsVersion& os = OsVersion::getInstance();
    if (transport == kUsb1Transport && os.majorVersion() == 4 && os.minorVersion() == 0) return nullptr;

    auto dll = Reaper::share(std::make_shared<TransportDll>(moduleName));
    bool inserted = false;
    {
      std::lock_guard<std::mutex> lock(loadedMutex_);
      // Another thread may have been faster; the module then has two owners for the moment.
      const auto position = loaded_.try_emplace(transport, dll);
      inserted = position.second;
      dll = position.first->second;
    }
    if (inserted && discover) discoverLocal(transport);
    return dll;
  } catch (const CallbackRefusal&) {
    throw;
  } catch (const Win32Exception& exception) {
    logFailure("Transports::loadTransportDll()", exception);
    return nullptr;
  }
}

void Transports::discoverLocal(const std::string& transport) {
  const std::vector<std::string> local = getTransportNames(kLocalTransport);
  if (!discover_ || std::find(local.begin(), local.end(), transport) == local.end()) return;
  const std::uint32_t rc = discover_(transport, "");
  if (rc == QRN_ERROR_SUCCESS) return;
  logDetail(log_component::server(), [&] {
    return LogText() << "Transports::loadTransportDll()"
                     << "DiscoveryManager.discover error=" << rc;
  });
}

void Transports::unload(const std::string& transport) {
  {
    const std::lock_guard<std::mutex> lock(loadedMutex_);
    if (loaded_.erase(transport) == 0) return;
  }
  Reaper::getInstance().flush();
}

std::uint32_t Transports::getTransportInfo(const std::string& moduleName, std::string& transport,
                                           std::string& kind, std::uint32_t failureLevel) {
  try {
    const ModuleForNow dll(moduleName);
    std::array<char, kInfoSize> buffer{};
    std::uint32_t reserved = 0;
    const auto getInfo = dll->entry<transport_entry::GetInfo>(transport_entry::kGetInfo);
    const std::uint32_t rc = callTransport(transport_entry::kGetInfo, [&] {
      return getInfo(buffer.data(), static_cast<std::uint32_t>(buffer.size()), &reserved);
    });
    if (rc != QRN_ERROR_SUCCESS) return rc;
    const auto end = std::find(buffer.begin(), buffer.end(), '\0');
    const std::string info(buffer.begin(), end);
    const std::uint32_t kindRc = AttributeCodec::getString(info, attribute::kTransportType, kind);
    if (kindRc != QRN_ERROR_SUCCESS) return kindRc;
    return AttributeCodec::getString(info, attribute::kTransport, transport);
  } catch (const Win32Exception& exception) {
    logFailure("Transports::getTransportInfo()", exception, failureLevel);
    return exception.getCode();
  }
}

std::uint32_t Transports::addTransport(const std::string& moduleName) {
  TraceScope trace(BasicLogger::getInstance(), log_component::server(),
                   [&] { return LogText() << "Transports::addTransport() module name=" << moduleName; });
  std::string transport;
  std::string kind;
  std::uint32_t rc = getTransportInfo(moduleName, transport, kind);
  const char* const key = rc == QRN_ERROR_SUCCESS ? registrationKey(kind) : nullptr;
  if (key != nullptr && !settings_.setString(key, transport, moduleName, kLocalSelection)) {
    rc = QRN_ERROR_INVALID_PARAMETER;
  }
  trace.setRc(rc);
  return rc;
}

std::uint32_t Transports::removeTransport(const std::string& name) {
  const bool wasRegistered = !registeredModule(name).empty();
  const bool localOpened = settings_.deleteValue(kLocalTransports, name, kLocalSelection);
  const bool networkOpened = settings_.deleteValue(kNetworkTransports, name, kLocalSelection);
  if (!localOpened || !networkOpened) {
    unload(name);
    return QRN_ERROR_SUCCESS;
  }
  std::string transport;
  std::string kind;
  // The name of a transport, which is removed by now, need not be that of a module: no error then.
  const std::uint32_t rc =
      getTransportInfo(name, transport, kind, wasRegistered ? log_level::kDetail : log_level::kError);
  if (rc != QRN_ERROR_SUCCESS) return rc;
  if (const char* const key = registrationKey(kind)) settings_.deleteValue(key, transport, kLocalSelection);
  unload(transport);
  return QRN_ERROR_SUCCESS;
}

std::uint32_t Transports::installTransport(const std::string& moduleName) {
  try {
    std::string transport;
    std::string kind;
    std::uint32_t rc = getTransportInfo(moduleName, transport, kind);
    if (rc != QRN_ERROR_SUCCESS) return rc;
    const auto dll = loadTransportDll(transport, false);
    if (dll == nullptr) return QRN_ERROR_SUCCESS;
    rc = callEntry(*dll, transport_entry::kInstall);
    if (rc != QRN_ERROR_SUCCESS) return rc;
    return discover_ ? discover_(transport, "") : QRN_ERROR_SUCCESS;
  } catch (const Win32Exception& exception) {
    logFailure("Transports::installTransport()", exception);
    return exception.getCode();
  }
}

std::vector<std::string> Transports::registeredModules() const {
  std::vector<std::string> modules;
  for (const char* const key : {kLocalTransports, kNetworkTransports}) {
    std::vector<std::string> names;
    settings_.getValueNames(key, names, kLocalSelection);
    for (const std::string& name : names) {
      std::string moduleName;
      if (settings_.getString(key, name, moduleName, kLocalSelection)) modules.push_back(moduleName);
    }
  }
  return modules;
}

std::uint32_t Transports::installRegisteredTransports() {
  const std::string prefix = "Transports::installRegisteredTransports()";
  std::uint32_t firstFailure = QRN_ERROR_SUCCESS;
  for (const std::string& moduleName : registeredModules()) {
    logDetail(log_component::server(), [&] { return LogText() << prefix << " transport=" << moduleName; });
    std::uint32_t rc = QRN_ERROR_SUCCESS;
    try {
      const ModuleForNow dll(moduleName);
      rc = callEntry(*dll, transport_entry::kInstall);
      if (rc != QRN_ERROR_SUCCESS) {
        logDetail(log_component::server(),
                  [&] { return LogText() << prefix << " TransportInstall() error=" << rc; });
      }
    } catch (const Win32Exception& exception) {
      logFailure(prefix, exception);
      rc = exception.getCode();
    }
    if (firstFailure == QRN_ERROR_SUCCESS) firstFailure = rc;
  }
  return firstFailure;
}

void Transports::uninstallRegisteredTransports() {
  for (const std::string& moduleName : registeredModules()) {
    try {
      const ModuleForNow dll(moduleName);
      callEntry(*dll, transport_entry::kUninstall);
    } catch (const Win32Exception& exception) {
      logFailure("Transports::uninstallRegisteredTransports()", exception);
    }
  }
}

}  // namespace qvn
