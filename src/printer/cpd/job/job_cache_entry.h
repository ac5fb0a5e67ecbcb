// The cache entry that tells a client whether this host has a job on the printer.
#pragma once

#include <array>
#include <cstdint>

#include "npa/alert_layouts.h"
#include "printer/cpd/cpd_printer.h"

namespace qvn {

inline void setJobCacheEntry(CpdPrinter& printer, bool jobOpen) {
  const std::array<std::uint8_t, 1> value = {static_cast<std::uint8_t>(jobOpen ? 0x01 : 0x00)};
  printer.updateCacheEntry(npa::kJobEntry.id, value);
}

}  // namespace qvn
