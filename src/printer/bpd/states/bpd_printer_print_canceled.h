// BpdPrinterPrintCanceled: a job that could not be written was cancelled; only closing the printer ends this.
#pragma once

#include "printer/bpd/states/bpd_printer_state.h"

namespace qvn {

class BpdPrinterPrintCanceled : public BpdPrinterState {
 public:
  static const BpdPrinterPrintCanceled& getInstance();

 private:
  BpdPrinterPrintCanceled() : BpdPrinterState("BpdPrinterPrintCanceled") {}
};

}  // namespace qvn
