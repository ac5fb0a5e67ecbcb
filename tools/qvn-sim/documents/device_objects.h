// The objects in the scanner of a BpdPrinter: "system", which has the host mode, "jobFactory", and the job of
// each host with the job's own "scanJob"; and who observes them.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "base/connection_id.h"
#include "documents/document_writer.h"
#include "documents/element.h"
#include "documents/host_send_job.h"
#include "documents/method_document.h"
#include "faults/fault_switches.h"
#include "page/scan_engine.h"
#include "page/scan_settings.h"

namespace sim {

class DeviceObjects {
 public:
  // What goes to a host, in this order.
  struct Output {
    std::function<void(ConnectionId, const Notification&)> notify;
    std::function<void(ConnectionId, std::string_view tag)> mark;
    std::function<void(ConnectionId, const ScanSettings&)> beginPage;
    std::function<bool(ConnectionId)> cutPage;
  };
  using Respond = std::function<void(const Element& result)>;

  DeviceObjects(ScanEngine& engine, FaultSwitches& faults, Output output)
      : engine_(engine), faults_(faults), output_(std::move(output)) {}

  // Carries out what the host asks for, and calls `respond` before it lets anybody know what came of it; not
  // when a fault keeps it from answering. Throws Refusal, and has done nothing then.
  void carryOut(ConnectionId host, const MethodCall& call, const Respond& respond);

  void pageOver(ConnectionId host, bool wasCut) { hosts_.at(host).job->pageOver(wasCut); }
  void connectionClosed(ConnectionId host);

 private:
  // An object, its event, and the observer's name.
  using Observer = std::tuple<std::string, std::string, std::string>;
  struct Host {
    std::set<Observer> observers;
    std::unique_ptr<HostSendJob> job;  // the one created last
  };
  struct Method;
  static const Method kMethods[];

  void observe(ConnectionId host, const MethodCall& call);
  void enterHostMode(ConnectionId host, const Element& params, const Respond& respond);
  void exitHostMode(ConnectionId host, const Element& params, const Respond& respond);
  void createJob(ConnectionId host, const Element& params, const Respond& respond);
  void startJob(ConnectionId host, const Element& params, const Respond& respond);
  void cancelJob(ConnectionId host, const Element& params, const Respond& respond);
  void finishJob(ConnectionId host, const Element& params, const Respond& respond);
  void finishOriginal(ConnectionId host, const Element& params, const Respond& respond);

  // What kind of object the host means by that name. Throws Refusal when it is none.
  std::string_view kindOf(ConnectionId host, const std::string& object);
  void notifyObservers(ConnectionId host, const std::string& object, std::string_view event,
                       const Element& data);
  void notifyOfSystem(ConnectionId host, const char* text);

  ScanEngine& engine_;
  FaultSwitches& faults_;
  const Output output_;
  std::map<ConnectionId, Host> hosts_;
  std::uint64_t lastJob_ = 0;
};

}  // namespace sim
