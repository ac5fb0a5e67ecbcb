// ExchangeTask: the base of the tasks that send one request to a device and wait for its reply.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>

#include "common/tasks/observation.h"
#include "common/tasks/task.h"
#include "device/connection.h"
#include "device/visitor_run.h"
#include "qvn/transport/device.h"
#include "qvn/transport/observer.h"

namespace qvn {

// The exchange runs on a worker thread (runMethod) while the caller waits. The task observes the device
// meanwhile: the transport delivers the reply to doUpdate on a thread of its own before the visitor returns.
class ExchangeTask : public Task, public Observer {
 protected:
  // `request` and `response` are the caller's; the response is emptied first.
  ExchangeTask(Device& device, const Connection& connection, Data& request, Data& response);

  // Runs runMethod on a worker thread and gives its result.
  std::uint32_t runOnWorker();

  virtual std::uint32_t runMethod() = 0;

  // Applies the visitor of that name to the connection, observing the device while it runs. `beforeRun` is
  // called once everything is in place. The visitor's result.
  template <typename BeforeRun>
  std::uint32_t exchange(const std::string& visitorName, BeforeRun&& beforeRun) {
    response_.reset();
    const Observation observation(*this, device_);
    VisitorRun visitor(device_, visitorName);
    beforeRun();
    return visitor.run(connection_, &request_);
  }

  // Held while what the device sent is looked at: a transport may deliver on several threads at once.
  std::mutex updateMutex_;
  Data& request_;
  Data& response_;
  Device& device_;
  const Connection& connection_;
};

}  // namespace qvn
