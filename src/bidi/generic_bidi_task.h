// GenericBidiTask: runs any exchange of a transport by its visitor's name.
#pragma once

#include <string>

#include "bidi/exchange_task.h"
#include "device/connection.h"
#include "qvn/transport/data.h"
#include "qvn/transport/device.h"

namespace qvn {

// Takes no reply itself: a class derived from it recognises the reply in doUpdate. Result: the transport's.
class GenericBidiTask : public ExchangeTask {
 public:
  GenericBidiTask(Device& device, const Connection& connection, Data& request, Data& response,
                  std::string visitorName);
  ~GenericBidiTask() override = default;

 protected:
  std::uint32_t doExecute() override;
  std::uint32_t runMethod() override;

 private:
  std::string visitorName_;
};

}  // namespace qvn
