// Turns a picture into the lines of a page, one after another: a page of 1200 dpi need not fit into memory.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "base/bytes.h"
#include "page/picture.h"
#include "page/scan_settings.h"

namespace sim {

class PageRenderer {
 public:
  PageRenderer(Picture& picture, const ScanSettings& settings);

  // The next line, as it is sent; valid until the next call. There are settings.lines() of them.
  ByteView nextLine();

 private:
  void render(const std::uint8_t* row);

  Picture& picture_;
  const ScanSettings settings_;
  std::vector<std::size_t> offsets_;  // where in a row of the picture each dot is
  bool isStraight_ = true;            // dots and columns are the same
  std::uint32_t next_ = 0;
  std::optional<std::uint32_t> rendered_;  // the row that `line_` shows
  Bytes line_;
};

}  // namespace sim
