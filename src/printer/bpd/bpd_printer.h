// BpdPrinter: a printer whose print channel may or may not carry NPA packets; what it does at any moment is
// its state's matter.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "device/job_description.h"
#include "printer/bpd/states/bpd_printer_state.h"
#include "printer/clients/printer_alert_task.h"
#include "printer/state_printer.h"
#include "qvn/transport/data.h"

namespace qvn {

// Has neither a buffered writer nor a cache, and tells its clients nothing of its jobs.
class BpdPrinter : public StatePrinter<BpdPrinter, BpdPrinterState> {
 public:
  // Lets the device's transport look at the device again and store what it found. Supplied by the discovery.
  using Verify = std::function<void(const std::string& attributes)>;

  explicit BpdPrinter(Verify verify);
  ~BpdPrinter() override;

  std::uint32_t doStartJob(const JobRequest& job) override;
  std::uint32_t doPrint(Data& request) override;
  std::uint32_t doWrite(Data& request) override;
  std::uint32_t doEndJob() override;
  std::uint32_t doExchangeNpa(Data& request, Data& response) override;
  std::uint32_t doGetCache(Data& cache) override;

  // For the states, which are called with the state lock held.

  // A device that may not be there is looked for first: 1 when it still may not be.
  std::uint32_t verify();
  // Whether the transport said that the printer takes NPA packets.
  bool isNpaMode() const { return npaMode_; }
  void setNpaMode(bool npaMode) { npaMode_ = npaMode; }

  // Whether the data of the open job has been searched for its account number.
  bool isAccountSearched() const { return accountSearched_; }
  void setAccountSearched(bool searched) { accountSearched_ = searched; }
  // Searches a job's first data: 0 with the account number, 1168 when it is not there.
  std::uint32_t getAccountNumber(const Data& data, std::string& account);

 protected:
  std::unique_ptr<PrinterAlertTask> newAlertTask() override;
  void logNoAlertTask(const char* operation) override;

 private:
  const Verify verify_;
  bool npaMode_ = false;
  bool accountSearched_ = false;
};

}  // namespace qvn
