// Transports: the transport modules of the process: registered in the registry, loaded on first use.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "common/logging/log_component.h"
#include "common/process_service.h"
#include "common/settings/application_settings.h"
#include "qvn/transport/connection_manager.h"
#include "qvn/transport/discoverer.h"
#include "qvn/transport/visitor_manager.h"
#include "transport/fallback.h"
#include "transport/transport_dll.h"

namespace qvn {

// Something that a transport lives by, with the hold that keeps the transport's module loaded.
template <typename Service>
struct FromTransport {
  std::shared_ptr<const void> module;  // null for the fallback
  Service* service;
};

// Any thread may ask for managers and discoverers. A transport that is removed stays loaded for as long as
// somebody uses what it gave.
class Transports : public ProcessService<Transports> {
 public:
  // How the devices of a local transport are found when it is loaded. Supplied by the discovery.
  using Discover = std::function<std::uint32_t(const std::string& transport, const std::string& options)>;
  void setDiscover(Discover discover) { discover_ = std::move(discover); }

  // The fallback when the transport that the attribute text names is not registered or cannot be loaded.
  FromTransport<ConnectionManager> getConnectionManager(const std::string& deviceAttributes);
  FromTransport<VisitorManager> getVisitorManager(const std::string& deviceAttributes);
  FromTransport<Discoverer> getDiscoverer(const std::string& transport);

  // The names that a kind covers; anything but a kind is itself the only name.
  std::vector<std::string> getTransportNames(const std::string& kindOrName) const;

  // What the module says of itself; a module that cannot be loaded is logged.
  std::uint32_t getTransportInfo(const std::string& moduleName, std::string& transport, std::string& kind,
                                 std::uint32_t failureLevel = log_level::kError);

  std::uint32_t addTransport(const std::string& moduleName);
  // Takes the name of a transport or of its module.
  std::uint32_t removeTransport(const std::string& name);
  std::uint32_t installTransport(const std::string& moduleName);
  // Tries each, whatever comes of the others; 0, or the code of the first that could not be installed.
  std::uint32_t installRegisteredTransports();
  void uninstallRegisteredTransports();
  void unload(const std::string& transport);

 private:
  friend class ProcessService<Transports>;
  Transports() = default;
  // Unloads the modules.
  ~Transports();

  // Null when the transport is not registered or cannot be loaded.
  std::shared_ptr<TransportDll> loadTransportDll(const std::string& transport, bool discover);
  std::shared_ptr<TransportDll> findLoaded(const std::string& transport);
  std::string registeredModule(const std::string& transport) const;
  std::vector<std::string> registeredModules() const;
  void discoverLocal(const std::string& transport);

  template <typename Service>
  FromTransport<Service> fromTransport(const std::string& transport, const char* entryPoint,
                                       const char* operation, Service& fallback);
  template <typename Service>
  FromTransport<Service> fromDevice(const std::string& deviceAttributes, const char* entryPoint,
                                    const char* operation, Service& fallback);

  std::map<std::string, std::shared_ptr<TransportDll>> loaded_;
  FallbackConnectionManager fallbackConnectionManager_;
  FallbackDiscoverer fallbackDiscoverer_;
  FallbackVisitorManager fallbackVisitorManager_;
  ApplicationSettings settings_;
  Discover discover_;
  // Guards loaded_; not held while a module is loaded, which may come back here to discover.
  std::mutex loadedMutex_;
};

}  // namespace qvn
