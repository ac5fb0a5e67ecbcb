// CpdPrinterOpen: the printer is open on its "bidi" connection and works on no job.
#pragma once

#include "device/job_description.h"
#include "printer/cpd/states/cpd_printer_state.h"
#include "qvn/transport/data.h"

namespace qvn {

class CpdPrinterOpen : public CpdPrinterState {
 public:
  static const CpdPrinterOpen& getInstance();
  std::uint32_t stateCode() const override;
  std::uint32_t doOpen(CpdPrinter& printer) const override;
  std::uint32_t doClose(CpdPrinter& printer) const override;
  std::uint32_t doStartJob(CpdPrinter& printer, const JobRequest& job) const override;
  std::uint32_t doExchangeNpa(CpdPrinter& printer, Data& request, Data& response) const override;
};

}  // namespace qvn
