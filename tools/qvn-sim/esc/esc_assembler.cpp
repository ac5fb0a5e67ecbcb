#include "esc/esc_assembler.h"

#include <algorithm>

#include "base/little_endian.h"
#include "esc/esc_commands.h"

namespace sim {

std::optional<Bytes> EscAssembler::next() {
  pending_.erase(pending_.begin(), std::find(pending_.begin(), pending_.end(), esc::kEscape));
  if (pending_.size() < esc::kHeaderLength) return std::nullopt;
  const std::size_t lengthAt = esc::entryOf(pending_).payloadLengthAt;
  return take(esc::kHeaderLength + (lengthAt == 0 ? std::size_t{0} : readLittle16(pending_, lengthAt)));
}

}  // namespace sim
