#include "api/initialization.h"

#include <thread>

#include "api/call_gate.h"
#include "api/system.h"
#include "common/clients/client_callback.h"
#include "common/exception.h"
#include "common/logging/basic_logger.h"
#include "platform/threads/all_signals_blocked.h"
#include "qvn/result_codes.h"
#include "qvn/transport/critical_section.h"

namespace qvn {
namespace {

// The initialisation lock guards the count, the closing flag and the making and taking down of System; only
// the two functions here take it. It is not held while calls in flight are waited for: one of them may be in
// a callback that initialises the library again.
CriticalSection initializationLock;
std::int32_t initializeCount = 0;
// The last uninitialisation has been, System is still there.
bool closing = false;

// The last uninitialisation came from inside a call of this thread, which still uses System.
thread_local bool destructionDeferred = false;

void logCount(const char* function) {
  logDetail(log_component::server(),
            [&] { return LogText() << function << "() initializeCount=" << initializeCount; });
}

// Takes System down when the last call in flight has returned, unless the library was initialised again.
void destroySystem() {
  while (true) {
    CallGate::drain();
    CriticalSectionLock lock(initializationLock);
    if (!closing) return;
    if (!CallGate::isDrained()) continue;
    closing = false;
    System::destroyInstance();
    return;
  }
}

}  // namespace

std::uint32_t Initialization::initialize() {
  CriticalSectionLock lock(initializationLock);
  try {
    if (initializeCount == 0) {
      if (closing) {
        closing = false;
      } else {
        System::getInstance();
      }
      CallGate::open();
    }
    ++initializeCount;
    logCount("QvnInitialize");
    return QRN_ERROR_SUCCESS;
  } catch (const Win32Exception& exception) {
    return exception.getCode();
  }
}

std::uint32_t Initialization::uninitialize() {
  try {
    {
      CriticalSectionLock lock(initializationLock);
      const bool wasInitialized = initializeCount > 0;
      --initializeCount;
      logCount("QvnUninitialize");
      if (initializeCount > 0) return QRN_ERROR_SUCCESS;
      initializeCount = 0;
      BasicLogger::stop();
      // One too many: there is no System to close, and the next initialisation must make one.
      if (!wasInitialized) return QRN_ERROR_SUCCESS;
      closing = true;
      CallGate::close();
    }
    if (CallGate::isInsideCall()) {
      destructionDeferred = true;
    } else if (ClientCallback::isRunning()) {
      // On a transport's thread, which would have to end itself. Nobody can wait for it but the process's
      // end.
      const platform::AllSignalsBlocked blocked;
      std::thread(destroySystem).detach();
    } else {
      destroySystem();
    }
    return QRN_ERROR_SUCCESS;
  } catch (const Win32Exception& exception) {
    return exception.getCode();
  }
}

void Initialization::finishDeferred() {
  if (!destructionDeferred) return;
  destructionDeferred = false;
  destroySystem();
}

}  // namespace qvn
