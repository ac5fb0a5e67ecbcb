// BidiTask: exchanges one NPA packet with a printer.
#pragma once

#include "bidi/exchange_task.h"
#include "device/connection.h"
#include "qvn/transport/data.h"
#include "qvn/transport/device.h"
#include "qvn/transport/observer.h"

namespace qvn {

// Result: 0 with the reply in the response; 1 when the printer does not allow exchanges now; 22 when it
// refused the command; else the transport's code.
class BidiTask : public ExchangeTask {
 public:
  BidiTask(Device& device, const Connection& connection, Data& request, Data& response);
  ~BidiTask() override = default;

 protected:
  std::uint32_t doExecute() override;
  std::uint32_t runMethod() override;
  using Observer::doUpdate;
  void doUpdate(Data& data) override;
};

}  // namespace qvn
