// CpdPrinterPrinting: a job is open and its data goes to the printer.
#pragma once

#include "printer/cpd/states/cpd_printer_state.h"
#include "qvn/transport/data.h"

namespace qvn {

class CpdPrinterPrinting : public CpdPrinterState {
 public:
  static const CpdPrinterPrinting& getInstance();
  std::uint32_t stateCode() const override;
  void doEnterState(CpdPrinter& printer) const override;
  std::uint32_t doPrint(CpdPrinter& printer, Data& request) const override;
  std::uint32_t doEndJob(CpdPrinter& printer) const override;
  std::uint32_t doCancelPrint(CpdPrinter& printer) const override;
};

}  // namespace qvn
