// CpdPrinter: a printer that speaks NPA packets; what it does at any moment is its state's matter.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <span>

#include "device/job_description.h"
#include "printer/clients/printer_alert_task.h"
#include "printer/cpd/mwo.h"
#include "printer/cpd/states/cpd_printer_state.h"
#include "printer/state_printer.h"
#include "qvn/transport/critical_section.h"
#include "qvn/transport/data.h"

namespace qvn {

class CpdPrinter : public StatePrinter<CpdPrinter, CpdPrinterState> {
 public:
  CpdPrinter();
  ~CpdPrinter() override;

  std::uint32_t doStartJob(const JobRequest& job) override;
  std::uint32_t doPrint(Data& request) override;
  std::uint32_t doWrite(Data& request) override;
  std::uint32_t doEndJob() override;
  std::uint32_t doExchangeNpa(Data& request, Data& response) override;
  std::uint32_t doGetCache(Data& cache) override;
  void requestCancel() override;
  void shutDown() override;

  // For the states, which are called with the state lock held.

  void sendJobStatus(std::uint32_t id);
  Mwo& writer() { return writer_; }
  bool isWriterEnabled() const { return writerEnabled_; }
  bool isFirstDataSent() const { return firstDataSent_; }
  void setFirstDataSent(bool sent) { firstDataSent_ = sent; }

  // The cache: the last reply to GetCacheCommand, empty until there is one. From any thread.
  Data cache();
  void setCache(const Data& cache);
  // Changes one entry of the cache, if there is a valid cache that has it with that length.
  void updateCacheEntry(std::uint16_t id, std::span<const std::uint8_t> value);

 protected:
  std::unique_ptr<PrinterAlertTask> newAlertTask() override;
  void logNoAlertTask(const char* operation) override;

 private:
  std::uint32_t fetchCacheByNpa(Data& cache);

  // Alerts change the cache on the transport's thread.
  CriticalSection cacheLock_;
  Data cache_;
  Mwo writer_;
  std::atomic<bool> writerEnabled_{false};
  bool firstDataSent_ = false;
};

}  // namespace qvn
