#include "printer/bpd/states/bpd_printer_print_canceled.h"

namespace qvn {

const BpdPrinterPrintCanceled& BpdPrinterPrintCanceled::getInstance() {
  static const BpdPrinterPrintCanceled instance;
  return instance;
}

}  // namespace qvn
