// Observer: whoever waits for what a Subject (a device, a discoverer) has to tell.
#pragma once

#include <cstdint>
#include <list>
#include <string>

#include "qvn/transport/critical_section.h"
#include "qvn/transport/data.h"

namespace qvn {

class Subject;

// An observer keeps the list of the subjects it is attached to. Whoever owns an observer detaches it from
// every subject before destroying it. A plug-in never derives from Observer; it only notifies through
// Subject.
class Observer {
 public:
  Observer() = default;
  Observer(const Observer&) = delete;
  Observer& operator=(const Observer&) = delete;
  virtual ~Observer();

  // Attaching twice makes two entries on both sides. Detaching removes the first entry, if there is one; an
  // update that another thread is in may still be running (Subject::waitForUpdates).
  void attachTo(Subject& subject);
  void detachFrom(Subject& subject);

  // Called by Subject::notify on the notifying thread, with no lock of the subject held.
  void update(std::uint32_t id, const std::string& text) { doUpdate(id, text); }
  void update(std::uint32_t id, Data& data) { doUpdate(id, data); }
  void update(const std::string& text) { doUpdate(text); }
  void update(Data& data) { doUpdate(data); }

 protected:
  virtual void doUpdate(std::uint32_t id, const std::string& text);
  virtual void doUpdate(std::uint32_t id, Data& data);
  virtual void doUpdate(const std::string& text);
  virtual void doUpdate(Data& data);

 private:
  bool forget(Subject& subject);

  // A reply may arrive just when its task gives up, and then both detach.
  CriticalSection subjectsLock_;
  std::list<Subject*> subjects_;
  std::uint32_t subjectCount_ = 0;
};

}  // namespace qvn
