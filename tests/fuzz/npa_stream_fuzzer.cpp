// What a device sends on its bidi port: packets, and garbage between them.
#include "shared/streams/npa_stream.h"

#include <cstdint>

#include "fuzz/check.h"
#include "fuzz/pieces.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace qvn::shared;
  const auto packets = qvn::fuzz::findHoweverCut<NpaStream>({bytes, size}, [](PacketView packet) {
    QVN_FUZZ_CHECK(isWellFormed(packet));
    return qvn::fuzz::Bytes(packet.begin(), packet.end());
  });
  for (std::size_t i = 1; i < packets.size(); ++i) {
    answers(packets[i], packets[i - 1]);
    QVN_FUZZ_CHECK(lastingEffect(packets[i]).size() < packets[i].size());
    if (isAlert(packets[i])) QVN_FUZZ_CHECK(packets[i].size() >= 8);
  }
  return 0;
}
