#include "esc_assembler.h"

#include <algorithm>

#include "esc_commands.h"
#include "little_endian.h"

namespace sim {

std::optional<Bytes> EscAssembler::next() {
  pending_.erase(pending_.begin(), std::find(pending_.begin(), pending_.end(), esc::kEscape));
  if (pending_.size() < esc::kHeaderLength) return std::nullopt;
  const std::size_t lengthAt = esc::entryOf(pending_).payloadLengthAt;
  const std::size_t total =
      esc::kHeaderLength + (lengthAt == 0 ? std::size_t{0} : readLittle16(pending_, lengthAt));
  if (pending_.size() < total) return std::nullopt;
  const auto end = pending_.begin() + static_cast<std::ptrdiff_t>(total);
  Bytes command(pending_.begin(), end);
  pending_.erase(pending_.begin(), end);
  return command;
}

}  // namespace sim
