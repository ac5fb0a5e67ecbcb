#include "qvn/transport/subject.h"

#include <algorithm>

namespace qvn {

Subject::~Subject() = default;

void Subject::attach(Observer& observer) {
  CriticalSectionLock lock(observersLock_);
  observers_.push_back(&observer);
}

void Subject::detach(Observer& observer) {
  CriticalSectionLock lock(observersLock_);
  const auto found = std::find(observers_.begin(), observers_.end(), &observer);
  if (found != observers_.end()) observers_.erase(found);
}

bool Subject::isAttached(const Observer& observer) {
  CriticalSectionLock lock(observersLock_);
  return std::find(observers_.begin(), observers_.end(), &observer) != observers_.end();
}

template <typename Call>
void Subject::notifyEach(Call&& call) {
  try {
    std::vector<Observer*> snapshot;
    {
      CriticalSectionLock lock(observersLock_);
      snapshot = observers_;
    }
    // Outside the lock, so that an observer may attach and detach from inside its update.
    for (Observer* observer : snapshot) {
      if (isAttached(*observer)) call(*observer);
    }
  } catch (...) {
    // Whoever notifies is a transport's thread, which can do nothing about an observer that throws.
  }
}

void Subject::notify(std::uint32_t id, const std::string& text) {
  notifyEach([&](Observer& observer) { observer.update(id, text); });
}

void Subject::notify(std::uint32_t id, Data& data) {
  notifyEach([&](Observer& observer) { observer.update(id, data); });
}

void Subject::notify(const std::string& text) {
  notifyEach([&](Observer& observer) { observer.update(text); });
}

void Subject::notify(Data& data) {
  notifyEach([&](Observer& observer) { observer.update(data); });
}

}  // namespace qvn
