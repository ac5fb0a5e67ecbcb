// What a scanner's data and alerts go to.
#pragma once

#include <cstdint>

#include "shared/scan/bytes.h"

namespace qvn::scan {

// The kinds of what is received, as the library's callback has them.
inline constexpr std::uint32_t kScanData = 0x1000;
inline constexpr std::uint32_t kAlert = 0x2000;
inline constexpr std::uint32_t kDetail = 0x4000;

class Receiver {
 public:
  virtual ~Receiver() = default;

  // On whatever thread delivers, one call at a time.
  virtual void receive(std::uint32_t kind, Bytes bytes) noexcept = 0;
};

}  // namespace qvn::scan
