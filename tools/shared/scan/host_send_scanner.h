// A Bpd scanner. It does not tell what it can do, sends all sheets of the feeder in one job, and belongs to
// one host as long as a job runs.
#pragma once

#include "shared/scan/capabilities.h"
#include "shared/scan/error.h"
#include "shared/scan/host_send_job.h"
#include "shared/scan/page.h"
#include "shared/scan/scanner.h"
#include "shared/scan/settings.h"

namespace qvn::scan {

class HostSendScanner : public Scanner {
 public:
  HostSendScanner(std::uint32_t handle, std::chrono::milliseconds patience);
  ~HostSendScanner() override;

  const Capabilities& capabilities() const override { return capabilities_; }
  // Its jobs lock it.
  void lock() override {}
  void unlock() override {}
  void apply(const Settings& settings) override;

 private:
  std::shared_ptr<Page> beginPage() override;
  void finishPage() noexcept override;
  void abort(Problem why) noexcept override;

  void setParameters();
  void startJob(std::shared_ptr<Page> page);
  void endJob() noexcept;

  Capabilities capabilities_;
  Settings settings_;                 // applied last
  std::shared_ptr<HostSendJob> job_;  // also held by a delivery that is running
};

}  // namespace qvn::scan
