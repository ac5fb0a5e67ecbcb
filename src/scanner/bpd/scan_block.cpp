#include "scanner/bpd/scan_block.h"

#include <cstddef>

#include "bidi/object_store/reply_frame.h"

namespace qvn {
namespace {

using Kind = ScanBlock::Kind;

constexpr std::size_t kTagRange = 32;

constexpr struct {
  std::string_view tag;
  Kind kind;
} kKinds[] = {
    {"Scan.Data", Kind::ScanData},  //
    {"Job.Start", Kind::JobStart},   {"Job.End", Kind::JobEnd},
    {"Page.Start", Kind::PageStart}, {"Page.End", Kind::PageEnd},
};

}  // namespace

ScanBlock readScanBlock(std::string_view bytes) {
  // A document may come in the frame of a reply.
  if (const std::string_view payload = unwrapReply(bytes); payload.starts_with("<?")) bytes = payload;
  const std::string_view front = bytes.substr(0, kTagRange);
  const std::size_t open = front.find('<');
  const std::size_t close = open == std::string_view::npos ? open : front.find('>', open);
  if (close == std::string_view::npos) return {};
  const std::string_view tag = front.substr(open + 1, close - open - 1);
  if (tag.starts_with('?')) return {Kind::Document, tag, bytes};
  for (const auto& known : kKinds) {
    if (tag == known.tag) return {known.kind, tag, bytes.substr(close + 1)};
  }
  return {Kind::Event, tag, tag};
}

ScanBlock readScanBlock(const Data& data) { return readScanBlock(bytesAsText(data)); }

}  // namespace qvn
