// BpdPrinterPrinting: a job is open and its data goes to the printer.
#pragma once

#include "printer/bpd/states/bpd_printer_state.h"
#include "qvn/transport/data.h"

namespace qvn {

class BpdPrinterPrinting : public BpdPrinterState {
 public:
  static const BpdPrinterPrinting& getInstance();
  std::uint32_t doPrint(BpdPrinter& printer, Data& request) const override;
  std::uint32_t doEndJob(BpdPrinter& printer) const override;
  std::uint32_t doCancelPrint(BpdPrinter& printer) const override;
  std::uint32_t doExchangeNpa(BpdPrinter& printer, Data& request, Data& response) const override;

 private:
  BpdPrinterPrinting() : BpdPrinterState("BpdPrinterPrinting") {}
};

}  // namespace qvn
