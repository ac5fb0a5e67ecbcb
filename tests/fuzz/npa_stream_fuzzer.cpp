// What a device sends on its bidi port: the packets do not depend on how the network cuts the bytes into
// pieces.
#include "ipv4/streams/npa_stream.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <utility>
#include <vector>

#include "fuzz/check.h"

namespace {

using namespace qvn::ipv4;

void take(NpaStream& stream, std::vector<Packet>& packets) {
  while (auto packet = stream.next()) {
    QVN_FUZZ_CHECK(isWellFormed(*packet));
    packets.push_back(std::move(*packet));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider input(bytes, size);
  std::vector<std::size_t> cuts;
  for (int i = input.ConsumeIntegralInRange(0, 8); i > 0; --i) {
    cuts.push_back(input.ConsumeIntegralInRange<std::size_t>(0, 64));
  }
  const auto sent = input.ConsumeRemainingBytes<std::uint8_t>();

  NpaStream whole;
  std::vector<Packet> packets;
  whole.add(sent);
  take(whole, packets);

  NpaStream pieces;
  std::vector<Packet> packetsOfPieces;
  PacketView rest(sent);
  for (const std::size_t cut : cuts) {
    const std::size_t length = std::min(cut, rest.size());
    pieces.add(rest.first(length));
    take(pieces, packetsOfPieces);
    rest = rest.subspan(length);
  }
  pieces.add(rest);
  take(pieces, packetsOfPieces);
  QVN_FUZZ_CHECK(packets == packetsOfPieces);
  QVN_FUZZ_CHECK(whole.isPartial() == pieces.isPartial());

  // Giving up comes to an end, whatever is left.
  for (std::size_t steps = 0; whole.isPartial(); ++steps) {
    QVN_FUZZ_CHECK(steps <= sent.size());
    whole.giveUpPartial();
    take(whole, packets);
  }
  for (std::size_t i = 1; i < packets.size(); ++i) {
    answers(packets[i], packets[i - 1]);
    QVN_FUZZ_CHECK(lastingEffect(packets[i]).size() < packets[i].size());
    if (isAlert(packets[i])) QVN_FUZZ_CHECK(packets[i].size() >= 8);
  }
  return 0;
}
