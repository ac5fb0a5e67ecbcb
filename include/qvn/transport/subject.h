// Subject: something that observers attach to. Devices and discoverers are subjects; a transport delivers
// what a device sends by notifying the device's observers.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "qvn/transport/data.h"
#include "qvn/transport/observer.h"

namespace qvn {

class Subject;

// A subject that may be gone: how a transport keeps the device that its threads deliver to. Copies are
// references to the same subject; any thread may use them.
class SubjectReference {
 public:
  // To nothing.
  SubjectReference() = default;
  explicit SubjectReference(Subject& subject);

  // Subject::notify, if the subject is still there; the subject then stays until the call is over. False when
  // it is gone.
  bool notify(Data& data) const;

 protected:
  struct Link;

  // The subject, which stays for the scope; null when it is gone.
  class Use {
   public:
    explicit Use(const SubjectReference& reference);
    ~Use();
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;
    Subject* subject() const { return subject_; }

   private:
    std::shared_ptr<Link> link_;
    Subject* subject_ = nullptr;
  };

 private:
  friend class Subject;
  std::shared_ptr<Link> link_;
};

// Any thread may attach, detach and notify. Observers use Observer::attachTo and detachFrom, which keep both
// sides together.
//
// The order of the virtual operations is part of the interface between the library and its plug-ins.
class Subject {
 public:
  Subject();
  Subject(const Subject&) = delete;
  Subject& operator=(const Subject&) = delete;
  virtual ~Subject();

  virtual void attach(Observer& observer);
  // Takes the first entry out. An update of the observer may still be running: waitForUpdates.
  virtual void detach(Observer& observer);

  // Calls each observer that was attached when the pass began and still is when its turn comes, in the order
  // of attaching, on the caller's thread and without a lock held. An observer that throws ends the pass;
  // nothing reaches the caller. The arguments stay the caller's.
  virtual void notify(std::uint32_t id, const std::string& text);
  virtual void notify(std::uint32_t id, Data& data);
  virtual void notify(const std::string& text);
  virtual void notify(Data& data);

  // Returns when no other thread is in a call of the observer's update for this subject any more, so that the
  // observer, detached before, may be destroyed; from inside such a call it returns at once.
  void waitForUpdates(const Observer& observer);

 protected:
  // Lets no notification through a SubjectReference begin and waits for those that other threads are in. A
  // class derived from this calls it first in its destructor; here it is called last.
  void endReferences();

 private:
  friend class SubjectReference;

  struct RunningUpdate {
    const Observer* observer;
    std::thread::id thread;
  };

  template <typename Call>
  void notifyEach(Call&& call);
  bool beginUpdate(const Observer& observer, std::uint32_t snapshotVersion);
  void endUpdate(const Observer& observer);

  const SubjectReference self_;
  std::vector<Observer*> observers_;
  // Counts the detaches: while it stands still, whoever is in a snapshot is still attached.
  std::uint32_t version_ = 0;
  std::vector<RunningUpdate> running_;
  std::condition_variable updateEnded_;
  // Guards the lists; never held while an observer runs.
  std::mutex mutex_;
};

}  // namespace qvn
