// Puts the page together that a device sends as blocks and a status, and accepts nothing else.
#pragma once

#include <cstdint>
#include <optional>

#include "shared/scan/bytes.h"
#include "shared/scan/esc_replies.h"

namespace qvn::scan {

class EscPageAssembler {
 public:
  // `expected`: the bytes that the page has.
  explicit EscPageAssembler(std::uint64_t expected) : expected_(expected) {}

  // Takes the next command and gives the part of the page in it, which is none for the status that ends a
  // complete page. Throws Error for a status that says otherwise, for blocks of another page, out of order or
  // of a wrong length, and for a page with more or fewer bytes than expected.
  Bytes take(Bytes command);

  bool complete() const { return complete_; }

 private:
  std::uint64_t expected_;
  std::uint64_t taken_ = 0;
  std::uint16_t nextBlock_ = 0;
  std::optional<std::uint8_t> page_;
  bool complete_ = false;
};

}  // namespace qvn::scan
