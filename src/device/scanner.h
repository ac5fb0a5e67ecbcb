// Scanner: the base of the scanner devices.
#pragma once

#include <cstdint>
#include <string>

#include "device/client_registration.h"
#include "device/connected_device.h"

namespace qvn {

// Operations that a family does not override answer 1. Client threads call them; each family locks for
// itself.
class Scanner : public ConnectedDevice {
 public:
  Scanner();
  ~Scanner() override = 0;

  // `parameters` is the client's own; what it points to, if anything, is the family's matter.
  virtual std::uint32_t doStartJob(std::uint32_t clientId, void* parameters);
  virtual std::uint32_t doEndJob(std::uint32_t clientId);
  virtual std::uint32_t doCancelJob(std::uint32_t clientId);
  // Sends data without waiting for a reply: also how a job's parameters get to the device.
  virtual std::uint32_t doExchangeData(std::uint32_t clientId, Data& data);
  // Exchanges a command; the response is replaced by the reply.
  virtual std::uint32_t doExchangeData(std::uint32_t clientId, Data& command, Data& response);
  virtual std::uint32_t doRegisterForAsyncData(const AsyncDataRegistration& registration);
  virtual std::uint32_t doUnregisterForAsyncData(std::uint32_t clientId);
  // Returns when the client, unregistered before, is in no callback any more; at once inside a callback.
  virtual void waitForCallbacks(std::uint32_t clientId);
  virtual std::uint32_t doGetCurrentState(std::uint32_t& state);

  // Nobody takes the data: its result code becomes 1.
  void doAccept(Data& data) override;
  using Device::doAccept;

  // Ends what the transport's threads do with the scanner. Before the services they use go.
  virtual void shutDown();

  Connection doGetConnection(const std::string& connectionName) override;

 protected:
  void doUpdate() override;
};

}  // namespace qvn
