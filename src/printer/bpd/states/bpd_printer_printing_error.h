// BpdPrinterPrintingError: the latest write of the job failed; the next one may succeed.
#pragma once

#include "printer/bpd/states/bpd_printer_state.h"
#include "qvn/transport/data.h"

namespace qvn {

class BpdPrinterPrintingError : public BpdPrinterState {
 public:
  static const BpdPrinterPrintingError& getInstance();
  std::uint32_t doPrint(BpdPrinter& printer, Data& request) const override;
  std::uint32_t doEndJob(BpdPrinter& printer) const override;
  std::uint32_t doCancelPrint(BpdPrinter& printer) const override;

 private:
  BpdPrinterPrintingError() : BpdPrinterState("BpdPrinterPrintingError") {}
};

}  // namespace qvn
