#include "printer/cpd/cpd_printer_cache.h"

#include <algorithm>

#include "common/byte_reader.h"
#include "common/exception.h"
#include "npa/alert_layouts.h"
#include "npa/npa_packet.h"
#include "qvn/result_codes.h"

namespace qvn {
bool CpdPrinterCache::isValid(const Data& data) { return npa::isCache(ByteReader(data)); }

CpdPrinterCache::CpdPrinterCache(const Data& data) : data_(data) {
  if (!isValid(data)) {
    throw Win32Exception("CpdPrinterCache - data is not valid", QRN_ERROR_INVALID_PARAMETER, "", 0);
  }
}

std::uint32_t CpdPrinterCache::update(std::uint16_t id, std::span<const std::uint8_t> value) {
  const ByteReader bytes(data_);
  auto entry = npa::cacheEntryAt(bytes, npa::kCachePacketHeader + npa::kCacheHeader);
  while (entry && entry->id != id) entry = npa::cacheEntryAt(bytes, entry->end());
  if (!entry) return QRN_ERROR_NOT_FOUND;
  if (entry->length != value.size()) return QRN_ERROR_INVALID_PARAMETER;
  std::copy(value.begin(), value.end(), data_.getBuffer() + entry->offset);
  return QRN_ERROR_SUCCESS;
}

void removeNpaHeader(Data& cache) {
  if (ByteReader(cache).u8(0) == npa::kStartOfPacket) cache.consume(npa::kCachePacketHeader, false);
}

}  // namespace qvn
