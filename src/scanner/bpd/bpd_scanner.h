// BpdScanner: a scanner that is driven by XML documents; what it does at any moment is its state's matter.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "common/clients/operation_lock.h"
#include "common/threads/mutex.h"
#include "common/threads/runnable.h"
#include "common/threads/thread.h"
#include "device/client_registration.h"
#include "device/open_connection.h"
#include "device/scanner.h"
#include "device/state_machine.h"
#include "scanner/bpd/bpd_scan_async_data_task.h"
#include "scanner/bpd/job/bpd_scan_job.h"
#include "scanner/bpd/job/bpd_scan_start_job_task.h"
#include "scanner/bpd/job/scan_job_watchdog.h"
#include "scanner/bpd/scanner_object_store.h"
#include "scanner/bpd/states/bpd_scanner_state.h"

namespace qvn {

// What the device sends gets through while a client's operation holds the state lock: the end of a job waits
// for it. Inside a callback the end of a job is refused with 170: it waits for the job's threads.
class BpdScanner : public Scanner, public TracedStateMachine<BpdScanner, BpdScannerState> {
 public:
  BpdScanner();
  ~BpdScanner() override;

  std::uint32_t doOpen() override;
  std::uint32_t doClose() override;
  // Returns at once; the job is started on a thread of its own.
  std::uint32_t doStartJob(std::uint32_t clientId, void* parameters) override;
  std::uint32_t doEndJob(std::uint32_t clientId) override;
  // Sets a parameter of the client's next job: the data is a tagged text, key "0" and value "1".
  std::uint32_t doExchangeData(std::uint32_t clientId, Data& data) override;
  std::uint32_t doExchangeData(std::uint32_t clientId, Data& command, Data& response) override;
  std::uint32_t doRegisterForAsyncData(const AsyncDataRegistration& registration) override;
  std::uint32_t doUnregisterForAsyncData(std::uint32_t clientId) override;
  void waitForCallbacks(std::uint32_t clientId) override;
  void doAccept(Data& data) override;
  using Scanner::doAccept;
  void shutDown() override;

  // By the watchdog, on its thread: nothing has been heard of the client's job for too long.
  void scanJobTimeout(std::uint32_t clientId);

  // For the states and the tasks.

  std::uint32_t openCount() const { return openCount_; }
  void setOpenCount(std::uint32_t count) { openCount_ = count; }

  // 0 once the "bidi" connection is open, and kept until it is closed.
  std::uint32_t openConnection();
  // Ends all that works on the connection, a job too, and with it the registrations of the clients.
  void closeConnection();

  // The registrations of the clients.
  BpdScanAsyncDataTask& asyncDataTask() { return asyncDataTask_; }
  // Held while clients are told something, so that each is told one thing after the other.
  OperationLock& notifyLock() { return notifyLock_; }
  // Tells the clients of something as if the device had sent it.
  void raise(const std::string& event);

  ScannerObjectStore& objectStore() { return objectStore_; }
  BpdScanJob& job() { return job_; }
  ScanJobWatchdog& watchdog() { return watchdog_; }
  // The observer of the job's notifications.
  std::string jobObserver();
  // The device is delivering the job's data: not any more once the job has ended.
  bool isScanning();

  // In Open: runs the start of a job on its thread. Throws when there is no thread to be had.
  void beginJob(std::uint32_t clientId);
  // The thread's work: the state's matter.
  std::uint32_t runStart();
  BpdScanStartJobTask& startTask() { return *startTask_; }
  // Returns when no job is being started any more; one that is gives up.
  void abortStart();
  // Client data that arrives from now on belongs to the job.
  void startJobData();
  // Why the client cannot end the job: it is another client's (87), or is being ended already (5).
  std::uint32_t refuseEndJob(std::uint32_t clientId);
  // The start has come to nothing.
  void endFailedStart();
  // The device waits for the next original: there is none.
  void finishOriginal(const std::string& jobObject);

 private:
  std::uint32_t timeoutMultiplier(std::uint32_t clientId) const;
  // The end of the job with that number; the number of a job that is not the present one gives 1.
  std::uint32_t endJob(std::uint32_t clientId, std::uint32_t jobNumber);

  std::atomic<std::uint32_t> openCount_{0};
  OperationLock notifyLock_{LockRank::Notify};
  OpenConnection bidi_;
  BpdScanAsyncDataTask asyncDataTask_{*this};
  ScannerObjectStore objectStore_{*this};

  BpdScanJob job_;
  Mutex endJobMutex_;

  MethodRunnable<BpdScanner> startRunnable_;
  std::unique_ptr<BpdScanStartJobTask> startTask_;
  std::unique_ptr<Thread> startThread_;
  ScanJobWatchdog watchdog_;
};

}  // namespace qvn
