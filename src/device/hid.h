// Hid: the base of the HID devices.
#pragma once

#include <cstdint>
#include <string>

#include "device/client_registration.h"
#include "device/connected_device.h"

namespace qvn {

// Operations that a family does not override answer 1. Client threads call them; each family locks for
// itself.
class Hid : public ConnectedDevice {
 public:
  Hid();
  ~Hid() override = 0;

  // The number of the last event.
  virtual std::uint32_t doGetCurrentState(std::uint32_t& state);
  virtual std::uint32_t doSetCurrentState(std::uint32_t state);
  virtual std::uint32_t doRegisterForReports(const ReportRegistration& registration);
  virtual std::uint32_t doUnregisterForReports(std::uint32_t clientId);

  // Ends what the transport's threads do with the HID. Before the services they use go.
  virtual void shutDown();

  Connection doGetConnection(const std::string& connectionName) override;

 protected:
  // Stores the attribute text.
  void doUpdate() override;
};

}  // namespace qvn
