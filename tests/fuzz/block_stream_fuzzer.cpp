// What a Bpd scanner sends on its scan port: the blocks are what it sent up to the first wrong header,
// however the network cuts the bytes.
#include "ipv4/streams/block_stream.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "fuzz/check.h"

namespace {

std::size_t numberAt(const std::vector<std::uint8_t>& bytes, std::size_t at) {
  return std::size_t{bytes[at]} << 24 | std::size_t{bytes[at + 1]} << 16 | std::size_t{bytes[at + 2]} << 8 |
         bytes[at + 3];
}

bool isHeader(const std::vector<std::uint8_t>& bytes, std::size_t at) {
  const std::size_t length = numberAt(bytes, at + 4);
  return bytes[at] == 0x42 && bytes[at + 1] == 0x4B && bytes[at + 3] == 0 &&
         ((bytes[at + 2] == 1 && length <= 131072) || (bytes[at + 2] == 2 && length == 4));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider input(bytes, size);
  const std::size_t piece = input.ConsumeIntegralInRange<std::size_t>(1, 64);
  const auto sent = input.ConsumeRemainingBytes<std::uint8_t>();

  qvn::ipv4::BlockStream stream;
  std::size_t taken = 0;
  for (std::size_t received = 0; received < sent.size();) {
    const std::size_t length = std::min(piece, sent.size() - received);
    std::copy_n(sent.begin() + static_cast<std::ptrdiff_t>(received), length, stream.room().begin());
    stream.add(length);
    received += length;
    while (const auto block = stream.next()) {
      QVN_FUZZ_CHECK(isHeader(sent, taken));
      const std::size_t payload = numberAt(sent, taken + 4);
      if (sent[taken + 2] == 1) {
        QVN_FUZZ_CHECK(block->code == 0 && block->bytes.size() == payload);
        QVN_FUZZ_CHECK(std::equal(block->bytes.begin(), block->bytes.end(),
                                  sent.begin() + static_cast<std::ptrdiff_t>(taken + 8)));
      } else {
        QVN_FUZZ_CHECK(block->bytes.empty() && block->code == numberAt(sent, taken + 8));
      }
      taken += 8 + payload;
    }
    QVN_FUZZ_CHECK(taken <= received);
    QVN_FUZZ_CHECK(stream.isPartial() == (taken < received));
    const bool hasHeader = received - taken >= 8;
    QVN_FUZZ_CHECK(stream.isBroken() == (hasHeader && !isHeader(sent, taken)));
    QVN_FUZZ_CHECK(stream.isBroken() || !hasHeader || received - taken < 8 + numberAt(sent, taken + 4));
    if (stream.isBroken()) break;
  }
  return 0;
}
