// What a Bpd scanner delivers, bare or in the frame of a reply: the frame, the tag, and all that the clients'
// side makes of a notification.
#include "scanner/bpd/scan_block.h"

#include <cstdint>
#include <string>

#include "bidi/object_store/reply_frame.h"
#include "fuzz/check.h"
#include "scanner/bpd/bpd_scanner.h"

namespace {

// Whether `part` lies within `whole`.
bool liesIn(std::string_view part, std::string_view whole) {
  return part.empty() ||
         (part.data() >= whole.data() && part.data() + part.size() <= whole.data() + whole.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace qvn;
  // Its own bytes, so that a view beyond their end is found.
  const std::string sent(reinterpret_cast<const char*>(bytes), size);
  const std::string_view payload = unwrapReply(sent);
  QVN_FUZZ_CHECK(payload == std::string_view(sent) || (liesIn(payload, sent) && payload.size() + 8 <= size));

  const ScanBlock block = readScanBlock(sent);
  QVN_FUZZ_CHECK(liesIn(block.text, sent));
  if (block.kind == ScanBlock::Kind::Event) {
    QVN_FUZZ_CHECK(block.text.size() <= 30 && block.text.find('>') == std::string_view::npos);
  }
  if (block.kind == ScanBlock::Kind::ScanData) {
    QVN_FUZZ_CHECK(
        std::string_view(sent).substr(0, sent.size() - block.text.size()).ends_with("<Scan.Data>"));
  }

  static BpdScanner scanner;
  Data data(sent.data(), static_cast<std::uint32_t>(sent.size()));
  if (block.kind != ScanBlock::Kind::None) scanner.asyncDataTask().updateClients(data);
  return 0;
}
