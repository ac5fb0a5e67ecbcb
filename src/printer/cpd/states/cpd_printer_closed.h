// CpdPrinterClosed: the printer is not open: nothing is connected.
#pragma once

#include "printer/cpd/states/cpd_printer_state.h"

namespace qvn {

class CpdPrinterClosed : public CpdPrinterState {
 public:
  static const CpdPrinterClosed& getInstance();
  std::uint32_t stateCode() const override;
  std::uint32_t doOpen(CpdPrinter& printer) const override;
};

}  // namespace qvn
