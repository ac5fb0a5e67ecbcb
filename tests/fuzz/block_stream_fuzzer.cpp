// What a Bpd scanner sends on its scan port: blocks, up to the first wrong header.
#include "shared/streams/block_stream.h"

#include <cstdint>

#include "fuzz/check.h"
#include "fuzz/pieces.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  qvn::fuzz::findHoweverCut<qvn::shared::BlockStream>({bytes, size}, [](const qvn::shared::Block& block) {
    QVN_FUZZ_CHECK(block.bytes.size() <= qvn::shared::kMaxBlockPayload);
    QVN_FUZZ_CHECK(block.code == 0 || block.bytes.empty());
    qvn::fuzz::Bytes found(block.bytes.begin(), block.bytes.end());
    for (const int shift : {24, 16, 8, 0}) found.push_back(block.code >> shift & 0xFF);
    return found;
  });
  return 0;
}
