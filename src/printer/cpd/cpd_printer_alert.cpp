#include "printer/cpd/cpd_printer_alert.h"

#include "common/byte_reader.h"
#include "common/exception.h"
#include "npa/npa_packet.h"
#include "qvn/result_codes.h"

namespace qvn {
namespace {

constexpr std::size_t kPowerOnResetLength = 8;
constexpr std::size_t kShortestStatus = 24;
constexpr std::size_t kAcknowledgeLength = 12;
constexpr std::size_t kEntry17Offset = 18;
constexpr std::size_t kEntry18Offset = 22;

}  // namespace

bool CpdPrinterAlert::isPowerOnReset(const Data& data) {
  const ByteReader bytes(data);
  return bytes.length() == kPowerOnResetLength && bytes.u8(0) == npa::kStartOfPacket &&
         bytes.has(npa::kCommandOffset, {0xFF, 0x01, 0x00, 0x00});
}

bool CpdPrinterAlert::isStatus(const Data& data) {
  const ByteReader bytes(data);
  return bytes.length() >= kShortestStatus && bytes.u8(0) == npa::kStartOfPacket &&
         bytes.has(npa::kCommandOffset, {0xF0, 0x73, 0x01, 0x01, 0x10, 0x01, 0x10, 0x00});
}

bool CpdPrinterAlert::isCancelPrintAcknowledge(const Data& data) {
  const ByteReader bytes(data);
  return bytes.length() == kAcknowledgeLength && bytes.u8(0) == npa::kStartOfPacket &&
         bytes.has(npa::kCommandOffset, {0xF0, 0x73, 0x01, 0x01, 0x08, 0x01, 0x08, 0x00});
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
  return ByteReader(data_).bytes(kEntry17Offset, 1);
}

std::span<const std::uint8_t> CpdPrinterAlert::entry18() const {
  return ByteReader(data_).bytes(kEntry18Offset, 2);
}

}  // namespace qvn
