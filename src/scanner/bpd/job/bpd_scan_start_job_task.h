// BpdScanStartJobTask: gets a Bpd scanner to scan for this host: host mode, a job, its observers, its start.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "bidi/object_store/store_messages.h"
#include "scanner/bpd/job/bpd_scan_task.h"

namespace qvn {

// Result: 0 once the job runs; 170 when another host has the scanner; 1460 when it does not get into host
// mode; 1359 when it makes or starts no job; else the code of the document that failed. Host mode is left
// again after a failure.
class BpdScanStartJobTask : public BpdScanTask {
 public:
  // `jobObjectName` becomes the name of the job's object.
  BpdScanStartJobTask(BpdScanner& scanner, std::uint32_t clientId, std::string& jobObjectName)
      : BpdScanTask(scanner), clientId_(clientId), jobObjectName_(jobObjectName) {}

  // Any thread: a job that has not been started yet is not wanted any more.
  void abort();
  bool wasAborted() const { return aborted_; }

 protected:
  std::uint32_t doExecute() override;
  void takeSystemUpdate(const std::string& text) override;

 private:
  // Like the store's, unless the start was aborted.
  std::uint32_t exchange(const StoreMessage& message, std::string& response);
  std::uint32_t exchange(const StoreMessage& message);

  // `refused`: the device said no.
  std::uint32_t enterHostMode(bool& refused);
  std::uint32_t waitForHostMode();
  std::uint32_t createJob();
  std::uint32_t observeJob();
  std::uint32_t startJob();

  const std::uint32_t clientId_;
  std::string& jobObjectName_;
  std::atomic<bool> aborted_{false};
};

}  // namespace qvn
