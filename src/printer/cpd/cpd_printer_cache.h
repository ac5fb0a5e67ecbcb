// CpdPrinterCache: the status cache of a Cpd printer, the reply to GetCacheCommand as it came.
//
//   offset 0   NPA header
//          4   E0 81 00, then F0 or FF
//          8   header of the cache
//         15   entries: id (2 bytes, high first), length n (1 byte), n bytes
#pragma once

#include <cstdint>
#include <span>

#include "qvn/transport/data.h"

namespace qvn {

class CpdPrinterCache {
 public:
  // What clients read begins behind this many bytes.
  static constexpr std::uint32_t kNpaHeaderLength = 8;

  // Throws Win32Exception with code 87 when the data is not a cache.
  explicit CpdPrinterCache(const Data& data);

  static bool isValid(const Data& data);

  // Overwrites the data of the first entry with that id: 1168 there is none, 87 it has another length.
  std::uint32_t update(std::uint16_t id, std::span<const std::uint8_t> value);

  const Data& data() const { return data_; }

 private:
  Data data_;
};

// Takes the NPA header off a cache that has one; what is left is what clients get.
void removeNpaHeader(Data& cache);

}  // namespace qvn
