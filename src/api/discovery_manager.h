// DiscoveryManager: lets transports find devices and stores each one that they report.
#pragma once

#include <cstdint>
#include <string>

#include "common/process_service.h"
#include "qvn/transport/observer.h"

namespace qvn {

// Reports arrive on whatever thread the transport's discoverer uses.
class DiscoveryManager : public Observer, public ProcessService<DiscoveryManager> {
 public:
  // The transport's answer, or the code of what was thrown on the way: a discovery that fails stops nobody.
  std::uint32_t discover(const std::string& transport, const std::string& options);
  // Refreshes the one device that the attribute text describes.
  std::uint32_t discoverSpecific(const std::string& deviceAttributes);

 protected:
  using Observer::doUpdate;
  void doUpdate(const std::string& deviceAttributes) override;

 private:
  template <typename Call>
  std::uint32_t ask(const std::string& transport, const char* what, Call&& call);

  friend class ProcessService<DiscoveryManager>;
  DiscoveryManager() = default;
  ~DiscoveryManager() override = default;
};

}  // namespace qvn
