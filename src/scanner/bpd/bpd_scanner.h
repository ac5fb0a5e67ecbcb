// BpdScanner: a scanner that is driven by XML documents; what it does at any moment is its state's matter.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "common/threads/event.h"
#include "common/threads/mutex.h"
#include "common/threads/runnable.h"
#include "common/threads/thread.h"
#include "device/scanner.h"
#include "device/state_machine.h"
#include "scanner/bpd/bpd_scan_async_data_task.h"
#include "scanner/bpd/job/bpd_scan_start_job_task.h"
#include "scanner/bpd/job/scan_job_watchdog.h"
#include "scanner/bpd/scanner_object_store.h"
#include "scanner/bpd/states/bpd_scanner_state.h"

namespace qvn {

// What the device sends gets through while a client's operation holds the state lock: the end of a job waits
// for it. From inside a callback of a Bpd scanner, which holds up all that is delivered, an operation that
// would have to wait for the state lock is refused with 170, and so is the end of a job.
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
  void doAccept(Data& data) override;
  using Scanner::doAccept;
  void shutDown() override;

  // Whoever has the lock may be waiting for what this thread is to deliver.
  static bool mustNotWait() { return BpdScanAsyncDataTask::isCalling(); }

  // By the watchdog, on its thread: nothing has been heard of the client's job for too long.
  void scanJobTimeout(std::uint32_t clientId);

  // For the states and the tasks.

  std::uint32_t openCount() const { return openCount_; }
  void setOpenCount(std::uint32_t count) { openCount_ = count; }

  // 0 once the "bidi" connection is open, and kept until it is closed.
  std::uint32_t openConnection();
  // Ends all that works on the connection, a job too, and with it the registrations of the clients.
  void closeConnection();

  // The registrations of the clients; made when they are first needed.
  std::shared_ptr<BpdScanAsyncDataTask> asyncDataTask();
  // Tells the clients of something as if the device had sent it.
  void raise(const std::string& event);

  ScannerObjectStore& objectStore() { return objectStore_; }
  const std::string& jobObjectName() const { return jobObjectName_; }
  // The observer of the job's notifications.
  std::string jobObserver();
  std::uint32_t jobClientId() const { return jobClientId_; }
  bool isJobActive() const { return jobActive_; }
  bool isTracked() const { return track_; }
  bool hasTimedOut() const { return timedOut_; }
  // The device is delivering the job's data: not any more once the job has ended.
  bool isScanning();
  void stopScanning() { scanning_ = false; }
  bool isInHostMode() const { return inHostMode_; }
  void setInHostMode(bool inHostMode) { inHostMode_ = inHostMode; }

  // In Open: runs the start of a job on its thread. Throws when there is no thread to be had.
  void beginJob(std::uint32_t clientId);
  // The thread's work: the state's matter.
  std::uint32_t runStart();
  BpdScanStartJobTask& startTask() { return *startTask_; }
  // Returns when no job is being started any more; one that is gives up.
  void abortStart();
  // Client data that arrives from now on belongs to the job.
  void startJobData();
  // The job is running, or has come to nothing.
  void startWatchdog() { watchdog_.start(jobClientId_); }
  void stopWatchdog() { watchdog_.stop(); }
  void endFailedStart();
  // The client has ended the job: the watchdog need not.
  void signalEnd() { endSignal_.set(); }
  void setJobActive(bool active) { jobActive_ = active; }

  void setPhase(ScanPhase phase) { watchdog_.setPhase(phase); }
  void countDataBlock() { ++dataBlockCount_; }
  std::uint32_t dataBlockCount() const { return dataBlockCount_; }
  // The device waits for the next original: there is none.
  void finishOriginal(const std::string& jobObject);

 private:
  std::uint32_t timeoutMultiplier(std::uint32_t clientId) const;
  // The end of the job with that number; the number of a job that is not the present one gives 1.
  std::uint32_t endJob(std::uint32_t clientId, std::uint32_t jobNumber);

  std::atomic<std::uint32_t> openCount_{0};
  CriticalSection taskLock_;    // guards the async data task's creation and end
  CriticalSection notifyLock_;  // held while what arrives is passed on
  Connectable* connection_ = nullptr;
  std::shared_ptr<BpdScanAsyncDataTask> asyncDataTask_;
  ScannerObjectStore objectStore_{*this};

  std::atomic<std::uint32_t> jobClientId_{0};
  // Tells the watchdog of one job from the next job.
  std::atomic<std::uint32_t> jobNumber_{0};
  std::atomic<bool> jobActive_{false};
  std::atomic<bool> scanning_{false};
  std::atomic<bool> timedOut_{false};
  std::atomic<bool> track_{false};
  std::atomic<bool> inHostMode_{false};
  std::atomic<std::uint32_t> dataBlockCount_{0};
  // Written by the thread that starts the job, read when that has ended.
  std::string jobObjectName_;
  Event endSignal_;
  Mutex endJobMutex_;

  MethodRunnable<BpdScanner> startRunnable_;
  std::unique_ptr<BpdScanStartJobTask> startTask_;
  std::unique_ptr<Thread> startThread_;
  ScanJobWatchdog watchdog_;
};

}  // namespace qvn
