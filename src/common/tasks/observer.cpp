#include "qvn/transport/observer.h"

#include <algorithm>

#include "common/exception.h"
#include "common/logging/basic_logger.h"
#include "qvn/transport/subject.h"

namespace qvn {

Observer::~Observer() = default;

void Observer::attachTo(Subject& subject) {
  subject.attach(*this);
  CriticalSectionLock lock(subjectsLock_);
  subjects_.push_back(&subject);
  ++subjectCount_;
}

void Observer::detachFrom(Subject& subject) {
  if (!forget(subject)) return;
  try {
    subject.detach(*this);
  } catch (const Win32Exception&) {
    logDetail(log_component::server(), [] { return LogText() << "Exception in Observer::detachFrom()"; });
    CriticalSectionLock lock(subjectsLock_);
    subjects_.push_back(&subject);
    ++subjectCount_;
  }
}

bool Observer::forget(Subject& subject) {
  CriticalSectionLock lock(subjectsLock_);
  const auto found = std::find(subjects_.begin(), subjects_.end(), &subject);
  if (found == subjects_.end()) return false;
  subjects_.erase(found);
  --subjectCount_;
  return true;
}

void Observer::doUpdate(std::uint32_t /*id*/, const std::string& /*text*/) {}
void Observer::doUpdate(std::uint32_t /*id*/, Data& /*data*/) {}
void Observer::doUpdate(const std::string& /*text*/) {}
void Observer::doUpdate(Data& /*data*/) {}

}  // namespace qvn
