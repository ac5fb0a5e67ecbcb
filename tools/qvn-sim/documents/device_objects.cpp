#include "documents/device_objects.h"

#include <algorithm>
#include <array>
#include <utility>

#include "documents/refusal.h"
#include "documents/scan_parameters.h"

namespace sim {
namespace {

constexpr std::string_view kSystem = "system";
constexpr std::string_view kJobFactory = "jobFactory";
constexpr std::string_view kJob = "HostSendJob";
constexpr std::string_view kScanJob = "HostSendJob.scanJob";

constexpr std::string_view kSystemUpdate = "systemUpdate";

constexpr std::size_t kMostObservers = 64;

constexpr std::int32_t kDone = 0;
constexpr std::int32_t kRefused = -1;

struct Event {
  std::string_view kind;  // of the object
  std::string_view name;
};
constexpr std::array kEvents = {
    Event{kSystem, kSystemUpdate},
    Event{kJob, "stateChanged"},
    Event{kJob, "pageScanned"},
};

bool hasEvent(std::string_view kind, std::string_view name) {
  return std::any_of(kEvents.begin(), kEvents.end(),
                     [&](const Event& event) { return event.kind == kind && event.name == name; });
}

}  // namespace

struct DeviceObjects::Method {
  std::string_view kind;  // of the object
  std::string_view name;
  bool takesParams;
  void (DeviceObjects::*carryOut)(ConnectionId, const Element&, const Respond&);
};

const DeviceObjects::Method DeviceObjects::kMethods[] = {
    {kSystem, "enterHostUSBSendMode", true, &DeviceObjects::enterHostMode},
    {kSystem, "exitHostUSBSendMode", false, &DeviceObjects::exitHostMode},
    {kJobFactory, "create", true, &DeviceObjects::createJob},
    {kJob, "start", false, &DeviceObjects::startJob},
    {kJob, "cancel", false, &DeviceObjects::cancelJob},
    {kJob, "done", false, &DeviceObjects::finishJob},
    {kScanJob, "done", false, &DeviceObjects::finishOriginal},
};

void DeviceObjects::carryOut(ConnectionId host, const MethodCall& call, const Respond& respond) {
  if (call.kind != MethodCall::Kind::CallMethod) {
    observe(host, call);
    respond(Element::integer(kDone));
    return;
  }
  const std::string_view kind = kindOf(host, call.object);
  const auto* const method = std::find_if(std::begin(kMethods), std::end(kMethods), [&](const Method& known) {
    return known.kind == kind && known.name == call.name;
  });
  if (method == std::end(kMethods)) throw Refusal(call.object + " has no method " + call.name);
  if (!method->takesParams && !call.params.isEmptyList()) throw Refusal(call.name + " takes no parameters");
  (this->*method->carryOut)(host, call.params, respond);
}

void DeviceObjects::observe(ConnectionId host, const MethodCall& call) {
  auto& observers = hosts_[host].observers;
  if (call.kind == MethodCall::Kind::RemoveObserver) {
    // Also when there is none: a job that never came to be cannot have any.
    observers.erase({call.object, call.name, call.observer});
    return;
  }
  if (!hasEvent(kindOf(host, call.object), call.name))
    throw Refusal(call.object + " has no event " + call.name);
  if (observers.size() == kMostObservers) throw Refusal("too many observers");
  observers.insert({call.object, call.name, call.observer});
}

void DeviceObjects::enterHostMode(ConnectionId host, const Element& params, const Respond& respond) {
  if (params.kind != Element::Kind::Map) throw Refusal("the host mode needs the scan parameters");
  if (!engine_.lock(host)) {
    respond(Element::integer(kRefused));
    return;
  }
  respond(Element::integer(kDone));
  const bool fails = faults_.strike(ScanFault::HostModeFail).has_value();
  if (fails) engine_.unlock(host);
  for (const auto& [observing, known] : hosts_) {
    notifyOfSystem(observing, fails ? "Enter HostSend Fail" : "Enter HostSend OK");
  }
}

void DeviceObjects::exitHostMode(ConnectionId host, const Element&, const Respond& respond) {
  respond(Element::integer(kDone));
  if (faults_.strike(ScanFault::HostModeStay)) return;
  HostSendJob* const job = hosts_[host].job.get();
  if (job != nullptr && job->isRunning()) job->cancel();
  const bool wasIn = engine_.isLockedBy(host);
  engine_.unlock(host);
  for (const auto& [observing, known] : hosts_) {
    if (wasIn || observing == host) notifyOfSystem(observing, "HostSend Exited");
  }
}

void DeviceObjects::createJob(ConnectionId host, const Element& params, const Respond& respond) {
  if (params.kind != Element::Kind::List || params.children.size() != 2 || params.children[0].text != kJob) {
    throw Refusal("create needs the kind of job and the scan parameters");
  }
  if (!engine_.isLockedBy(host)) throw Refusal("not in host mode");
  const ScanSettings settings = readScanParameters(params.children[1]);
  auto& job = hosts_[host].job;
  if (job && job->isRunning()) throw Refusal(job->name() + " is running");
  const std::string name = std::string(kJob) + "_" + std::to_string(++lastJob_);
  job = std::make_unique<HostSendJob>(
      host, name, settings, engine_,
      HostSendJob::Output{[this, host, name](std::string_view event, const Element& data) {
                            notifyObservers(host, name, event, data);
                          },
                          [this, host](std::string_view tag) { output_.mark(host, tag); },
                          [this, host](const ScanSettings& of) { output_.beginPage(host, of); },
                          [this, host] { return output_.cutPage(host); }});
  respond(Element::string(name));
}

void DeviceObjects::startJob(ConnectionId host, const Element&, const Respond& respond) {
  HostSendJob& job = *hosts_[host].job;
  if (!engine_.isLockedBy(host) || !job.isReady()) {
    respond(Element::integer(kRefused));
    return;
  }
  respond(Element::integer(kDone));
  job.start();
}

void DeviceObjects::cancelJob(ConnectionId host, const Element&, const Respond& respond) {
  if (faults_.strike(ScanFault::IgnoreAbort)) return;
  respond(Element::integer(kDone));
  hosts_[host].job->cancel();
}

void DeviceObjects::finishJob(ConnectionId, const Element&, const Respond& respond) {
  respond(Element::integer(kDone));
}

void DeviceObjects::finishOriginal(ConnectionId host, const Element&, const Respond& respond) {
  HostSendJob& job = *hosts_[host].job;
  if (!job.isWaitingForOriginal()) throw Refusal(job.name() + " waits for no original");
  respond(Element::integer(kDone));
  job.originalDone();
}

std::string_view DeviceObjects::kindOf(ConnectionId host, const std::string& object) {
  if (object == kSystem) return kSystem;
  if (object == kJobFactory) return kJobFactory;
  if (const HostSendJob* const job = hosts_[host].job.get()) {
    if (object == job->name()) return kJob;
    if (object == job->name() + ".scanJob") return kScanJob;
  }
  throw Refusal("no object " + object);
}

void DeviceObjects::notifyObservers(ConnectionId host, const std::string& object, std::string_view event,
                                    const Element& data) {
  for (const auto& [observed, observedEvent, observer] : hosts_[host].observers) {
    if (observed == object && observedEvent == event) {
      output_.notify(host, {observer, object, observedEvent, data});
    }
  }
}

void DeviceObjects::notifyOfSystem(ConnectionId host, const char* text) {
  notifyObservers(host, std::string(kSystem), kSystemUpdate, Element::string(text));
}

void DeviceObjects::connectionClosed(ConnectionId host) {
  hosts_.erase(host);
  engine_.connectionClosed(host);
}

}  // namespace sim
