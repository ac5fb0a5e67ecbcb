// Subject: something that observers attach to. Devices and discoverers are subjects; a transport delivers
// what a device sends by notifying the device's observers.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "qvn/transport/critical_section.h"
#include "qvn/transport/data.h"
#include "qvn/transport/observer.h"

namespace qvn {

// Any thread may attach, detach and notify. Observers use Observer::attachTo and detachFrom, which keep both
// sides together.
//
// The order of the virtual operations is part of the interface between the library and its plug-ins.
class Subject {
 public:
  Subject() = default;
  Subject(const Subject&) = delete;
  Subject& operator=(const Subject&) = delete;
  virtual ~Subject();

  virtual void attach(Observer& observer);
  virtual void detach(Observer& observer);

  // Calls each observer that was attached when the pass began and still is when its turn comes, in the order
  // of attaching, on the caller's thread and without a lock held. An observer that throws ends the pass;
  // nothing reaches the caller. The arguments stay the caller's.
  virtual void notify(std::uint32_t id, const std::string& text);
  virtual void notify(std::uint32_t id, Data& data);
  virtual void notify(const std::string& text);
  virtual void notify(Data& data);

 private:
  template <typename Call>
  void notifyEach(Call&& call);
  bool isAttached(const Observer& observer);

  std::vector<Observer*> observers_;
  CriticalSection observersLock_;
};

}  // namespace qvn
