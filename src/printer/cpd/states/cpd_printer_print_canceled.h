// CpdPrinterPrintCanceled: the job was cancelled or rejected: what the client still sends is thrown away.
#pragma once

#include "printer/cpd/states/cpd_printer_state.h"
#include "qvn/transport/data.h"

namespace qvn {

class CpdPrinterPrintCanceled : public CpdPrinterState {
 public:
  static const CpdPrinterPrintCanceled& getInstance();
  std::uint32_t stateCode() const override;
  void doEnterState(CpdPrinter& printer) const override;
  std::uint32_t doPrint(CpdPrinter& printer, Data& request) const override;
  std::uint32_t doEndJob(CpdPrinter& printer) const override;
};

}  // namespace qvn
