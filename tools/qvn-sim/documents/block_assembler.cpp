#include "documents/block_assembler.h"

#include "documents/bpd_blocks.h"

namespace sim {

std::optional<Bytes> BlockAssembler::next() {
  if (pending_.size() < bpd::kHeaderLength) return std::nullopt;
  const std::size_t total =
      bpd::kHeaderLength + (bpd::isHeader(pending_) ? bpd::payloadLength(pending_) : std::size_t{0});
  return take(total);
}

}  // namespace sim
