#include "printer/cpd/cpd_printer_alert.h"

#include "common/byte_reader.h"
#include "common/exception.h"
#include "npa/alert_layouts.h"
#include "qvn/result_codes.h"

namespace qvn {

bool CpdPrinterAlert::isPowerOnReset(const Data& data) {
  return npa::hasLayout(ByteReader(data), npa::kPowerOnReset);
}

bool CpdPrinterAlert::isStatus(const Data& data) {
  return npa::hasLayout(ByteReader(data), npa::kStatusAlert);
}

bool CpdPrinterAlert::isCancelPrintAcknowledge(const Data& data) {
  return npa::hasLayout(ByteReader(data), npa::kCancelAcknowledge);
}

bool CpdPrinterAlert::isAny(const Data& data) {
  return isPowerOnReset(data) || isStatus(data) || isCancelPrintAcknowledge(data);
}

CpdPrinterAlert::CpdPrinterAlert(const Data& data) : data_(data) {
  if (!isAny(data)) {
    throw Win32Exception("CpdPrinterAlert - data is not valid", QRN_ERROR_INVALID_PARAMETER, "", 0);
  }
}

std::span<const std::uint8_t> CpdPrinterAlert::entry17() const {
  return npa::kJobEntry.in(ByteReader(data_));
}

std::span<const std::uint8_t> CpdPrinterAlert::entry18() const {
  return npa::kStatusWordEntry.in(ByteReader(data_));
}

}  // namespace qvn
