#include "common/logging/trace_scope.h"

namespace qvn {

void TraceScopeBase::enter(const std::string& text) {
  text_ = text;
  logger_.log(component_, level_, "+" + text_);
  logger_.enterScope();
  entered_ = true;
}

void TraceScopeBase::leave() {
  if (!entered_) return;
  try {
    logger_.leaveScope();
    const std::string detail = exitText_.empty() ? std::string() : " rc=" + exitText_;
    logger_.log(component_, level_, "-" + text_ + detail);
  } catch (...) {
    // An operation must not fail because its exit could not be logged.
  }
}

}  // namespace qvn
