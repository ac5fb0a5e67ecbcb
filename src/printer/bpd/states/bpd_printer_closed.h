// BpdPrinterClosed: the printer is not open: nothing is connected.
#pragma once

#include "printer/bpd/states/bpd_printer_state.h"

namespace qvn {

class BpdPrinterClosed : public BpdPrinterState {
 public:
  static const BpdPrinterClosed& getInstance();
  std::uint32_t doOpen(BpdPrinter& printer) const override;

 private:
  BpdPrinterClosed() : BpdPrinterState("BpdPrinterClosed") {}
};

}  // namespace qvn
