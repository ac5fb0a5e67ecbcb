// ScanBlock: one piece of what a Bpd scanner delivers, told apart by the tag that it begins with.
#pragma once

#include <string_view>

#include "qvn/transport/data.h"

namespace qvn {

struct ScanBlock {
  enum class Kind { None, JobStart, JobEnd, PageStart, PageEnd, ScanData, Document, Event };

  Kind kind = Kind::None;
  std::string_view tag;
  // Of scan data what follows the tag, of a document all of it (out of its frame), of an event its name. It
  // lies in the data.
  std::string_view text;
};

// The tag is what stands between the first "<" and the next ">", both within the first 32 bytes. Without one
// the block is none.
ScanBlock readScanBlock(std::string_view bytes);
ScanBlock readScanBlock(const Data& data);

}  // namespace qvn
