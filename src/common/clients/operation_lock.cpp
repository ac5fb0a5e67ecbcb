#include "common/clients/operation_lock.h"

#include <cassert>
#include <string>
#include <utility>

#include "common/clients/client_call.h"
#include "common/logging/basic_logger.h"
#include "qvn/result_codes.h"

namespace qvn {
namespace {

// The last one in the order that the calling thread holds.
thread_local LockRank innermost = LockRank::None;

}  // namespace

CallbackRefusal::CallbackRefusal(const char* what) : Win32Exception(what, QRN_ERROR_BUSY, "", 0) {
  logDetail(log_component::server(), [&] { return LogText() << "inside a callback: " << what; });
}

void refuseInCallback(const char* what) {
  if (ClientCall::isRunning()) throw CallbackRefusal(what);
}

OperationLock::Turn::Turn(OperationLock& lock, Nested nested) : lock_(lock), outer_(innermost) {
  if (!ClientCall::isRunning()) {
    lock_.section_.enter();
    assert(lock_.depth_ > 0 || lock_.rank_ > outer_);
  } else if (!lock_.section_.tryEnter()) {
    throw CallbackRefusal("the device is at work");
  } else if (nested == Nested::Refused && lock_.depth_ > 0) {
    lock_.section_.leave();
    throw CallbackRefusal("the operation is not over");
  }
  if (++lock_.depth_ == 1) lock_.holder_ = std::this_thread::get_id();
  lock_.wasTaken_ = true;
  if (lock_.rank_ > innermost) innermost = lock_.rank_;
}

OperationLock::Turn::~Turn() {
  innermost = outer_;
  if (--lock_.depth_ == 0) lock_.holder_ = std::thread::id();
  lock_.section_.leave();
}

}  // namespace qvn
