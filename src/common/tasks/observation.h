// Observation: an observer's attachment to a subject for a scope.
#pragma once

#include "qvn/transport/observer.h"
#include "qvn/transport/subject.h"

namespace qvn {

class [[nodiscard]] Observation {
 public:
  Observation(Observer& observer, Subject& subject) : observer_(observer), subject_(subject) {
    observer_.attachTo(subject_);
  }
  // Returns when no update of the observer is running any more.
  ~Observation() {
    observer_.detachFrom(subject_);
    subject_.waitForUpdates(observer_);
  }
  Observation(const Observation&) = delete;
  Observation& operator=(const Observation&) = delete;

 private:
  Observer& observer_;
  Subject& subject_;
};

}  // namespace qvn
