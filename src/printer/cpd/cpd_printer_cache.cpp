#include "printer/cpd/cpd_printer_cache.h"

#include <algorithm>

#include "common/byte_reader.h"
#include "common/exception.h"
#include "npa/npa_packet.h"
#include "qvn/result_codes.h"

namespace qvn {
namespace {

constexpr std::size_t kShortestCache = 9;
constexpr std::size_t kEntriesOffset = 15;
constexpr std::size_t kEntryHeaderLength = 3;

}  // namespace

bool CpdPrinterCache::isValid(const Data& data) {
  const ByteReader bytes(data);
  return bytes.length() >= kShortestCache && (bytes.has(npa::kCommandOffset, {0xE0, 0x81, 0x00, 0xF0}) ||
                                              bytes.has(npa::kCommandOffset, {0xE0, 0x81, 0x00, 0xFF}));
}

CpdPrinterCache::CpdPrinterCache(const Data& data) : data_(data) {
  if (!isValid(data)) {
    throw Win32Exception("CpdPrinterCache - data is not valid", QRN_ERROR_INVALID_PARAMETER, "", 0);
  }
}

std::uint32_t CpdPrinterCache::update(std::uint16_t id, std::span<const std::uint8_t> value) {
  const ByteReader bytes(data_);
  std::size_t offset = kEntriesOffset;
  while (const auto entryId = bytes.u16(offset)) {
    const auto length = bytes.u8(offset + 2);
    if (!length.has_value()) break;
    const std::size_t content = offset + kEntryHeaderLength;
    if (*entryId == id) {
      if (*length != value.size()) return QRN_ERROR_INVALID_PARAMETER;
      if (bytes.bytes(content, *length).size() != *length) break;
      std::copy(value.begin(), value.end(), data_.getBuffer() + content);
      return QRN_ERROR_SUCCESS;
    }
    offset = content + *length;
  }
  return QRN_ERROR_NOT_FOUND;
}

void removeNpaHeader(Data& cache) {
  if (ByteReader(cache).u8(0) == npa::kStartOfPacket) cache.consume(CpdPrinterCache::kNpaHeaderLength, false);
}

}  // namespace qvn
