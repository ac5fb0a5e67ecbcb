// BpdScanEndJobTask: ends a scan job in the device, and what was set up for it.
#pragma once

#include <cstdint>
#include <string>

#include "scanner/bpd/job/bpd_scan_task.h"

namespace qvn {

// Result: 0; the code with which host mode could not be left; or that of the first observation that did not
// end.
class BpdScanEndJobTask : public BpdScanTask {
 public:
  // `cancel`: the job still runs, and its end is waited for.
  BpdScanEndJobTask(BpdScanner& scanner, bool cancel) : BpdScanTask(scanner), cancel_(cancel) {}

 protected:
  std::uint32_t doExecute() override;
  void takeSystemUpdate(const std::string& text) override;

 private:
  void cancelJob();
  std::uint32_t endObservations();

  const bool cancel_;
};

}  // namespace qvn
