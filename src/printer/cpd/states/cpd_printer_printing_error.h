// CpdPrinterPrintingError: a write of the job failed: the next one that succeeds goes on with it.
#pragma once

#include "printer/cpd/states/cpd_printer_state.h"
#include "qvn/transport/data.h"

namespace qvn {

class CpdPrinterPrintingError : public CpdPrinterState {
 public:
  static const CpdPrinterPrintingError& getInstance();
  std::uint32_t stateCode() const override;
  std::uint32_t doPrint(CpdPrinter& printer, Data& request) const override;
  std::uint32_t doEndJob(CpdPrinter& printer) const override;
  std::uint32_t doCancelPrint(CpdPrinter& printer) const override;
};

}  // namespace qvn
