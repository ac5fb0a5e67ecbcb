// CpdPrinterCache: the status cache of a Cpd printer, the reply to GetCacheCommand as it came.
#pragma once

#include <cstdint>
#include <span>

#include "qvn/transport/data.h"

namespace qvn {

class CpdPrinterCache {
 public:
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
