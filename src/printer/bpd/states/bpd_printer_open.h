// BpdPrinterOpen: clients have the printer open; no job is open.
#pragma once

#include "device/job_description.h"
#include "printer/bpd/states/bpd_printer_state.h"
#include "qvn/transport/data.h"

namespace qvn {

class BpdPrinterOpen : public BpdPrinterState {
 public:
  static const BpdPrinterOpen& getInstance();
  std::uint32_t doOpen(BpdPrinter& printer) const override;
  std::uint32_t doClose(BpdPrinter& printer) const override;
  std::uint32_t doStartJob(BpdPrinter& printer, const JobRequest& job) const override;
  std::uint32_t doExchangeNpa(BpdPrinter& printer, Data& request, Data& response) const override;

 private:
  BpdPrinterOpen() : BpdPrinterState("BpdPrinterOpen") {}
};

}  // namespace qvn
