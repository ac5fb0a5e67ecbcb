#include "npa/dc_summary_command.h"

#include <algorithm>

#include "common/byte_reader.h"
#include "common/logging/trace_scope.h"

namespace qvn {
namespace {

constexpr std::size_t kRevisionsOffset = 6;
constexpr std::size_t kMaxPacketSizeOffset = 29;

}  // namespace

bool DcSummaryCommand::getMaxPacketSize(const Data& reply, std::uint32_t& size) const {
  TraceScope trace(BasicLogger::getInstance(), log_component::server(),
                   [] { return LogText() << "DcSummaryCommand::getMaxPacketSize"; });
  const auto found = ByteReader(reply).u16(kMaxPacketSizeOffset);
  if (!isReplyTo(reply) || !found.has_value()) return false;
  size = *found;
  trace.logDetail([&] { return LogText() << " maxPacketSize=" << size; });
  return true;
}

bool DcSummaryCommand::getNpaVersions(const Data& reply, Revisions& revisions) const {
  TraceScope trace(BasicLogger::getInstance(), log_component::server(),
                   [] { return LogText() << "DcSummaryCommand::getNpaVersions"; });
  const auto found = ByteReader(reply).bytes(kRevisionsOffset, revisions.size());
  if (!isReplyTo(reply) || found.empty()) return false;
  std::copy(found.begin(), found.end(), revisions.begin());
  for (const std::uint8_t level : revisions) {
    trace.logDetail([&] { return LogText() << "revisionLevel=" << std::uint32_t{level}; });
  }
  return true;
}

}  // namespace qvn
