#include "api/initialization.h"

#include <condition_variable>
#include <mutex>

#include "api/call_gate.h"
#include "api/system.h"
#include "common/clients/operation_lock.h"
#include "common/logging/basic_logger.h"
#include "platform/threads/thread.h"
#include "qvn/result_codes.h"

namespace qvn {
namespace {

// The initialisation lock guards what follows and the making of System. It is not held while System is taken
// down: that waits for threads whose callbacks may call the two functions here.
std::mutex initializationLock;
// Never destroyed: that would wait for who waits here while the process ends.
union Forever {
  Forever() : condition() {}
  ~Forever() {}
  std::condition_variable condition;
} changed;
std::int32_t initializeCount = 0;
bool isGoingDown = false;
std::uint32_t holds = 0;

void logCount(const char* function) {
  logDetail(log_component::server(),
            [&] { return LogText() << function << "() initializeCount=" << initializeCount; });
}

void waitWhileGoingDown(std::unique_lock<std::mutex>& lock) {
  if (isGoingDown) refuseInCallback("the library is being taken down");
  changed.condition.wait(lock, [] { return !isGoingDown; });
}

}  // namespace

std::uint32_t Initialization::initialize() {
  const CallGate::Visit visit;
  std::unique_lock<std::mutex> lock(initializationLock);
  waitWhileGoingDown(lock);
  if (initializeCount == 0) {
    System::getInstance();
    platform::keepThreads(true);
    CallGate::open();
  }
  ++initializeCount;
  logCount("QvnInitialize");
  return QRN_ERROR_SUCCESS;
}

std::uint32_t Initialization::uninitialize() {
  const CallGate::Visit visit;
  {
    const std::lock_guard<std::mutex> lock(initializationLock);
    if (initializeCount == 1) refuseInCallback("callbacks are not over");
    const bool wasInitialized = initializeCount > 0;
    --initializeCount;
    logCount("QvnUninitialize");
    if (initializeCount > 0) return QRN_ERROR_SUCCESS;
    initializeCount = 0;
    BasicLogger::stop();
    // One too many: there is no System to take down.
    if (!wasInitialized) return QRN_ERROR_SUCCESS;
    isGoingDown = true;
  }
  struct GoingDown {
    ~GoingDown() {
      const std::lock_guard<std::mutex> lock(initializationLock);
      isGoingDown = false;
      changed.condition.notify_all();
    }
  } goingDown;
  CallGate::close();
  {
    std::unique_lock<std::mutex> lock(initializationLock);
    changed.condition.wait(lock, [] { return holds == 0; });
  }
  System::destroyInstance();
  platform::keepThreads(false);
  return QRN_ERROR_SUCCESS;
}

Initialization::Hold::Hold() {
  std::unique_lock<std::mutex> lock(initializationLock);
  waitWhileGoingDown(lock);
  ++holds;
}

Initialization::Hold::~Hold() {
  const std::lock_guard<std::mutex> lock(initializationLock);
  --holds;
  changed.condition.notify_all();
}

}  // namespace qvn
