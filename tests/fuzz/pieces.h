// What a device sends, in pieces as a network cuts it.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "fuzz/check.h"
#include "shared/streams/receive_buffer.h"

namespace qvn::fuzz {

using Bytes = std::vector<std::uint8_t>;
using View = std::span<const std::uint8_t>;

inline void receive(shared::ReceiveBuffer& stream, View bytes) {
  const auto room = stream.room();
  QVN_FUZZ_CHECK(room.size() >= bytes.size());
  std::copy(bytes.begin(), bytes.end(), room.begin());
  stream.add(bytes.size());
}

// What a stream finds in the bytes, the same in pieces of any length; `bytesOf` makes bytes of each thing
// found. Giving up what has begun comes to an end, whatever is left.
template <typename Stream, typename BytesOf>
std::vector<Bytes> findHoweverCut(View bytes, const BytesOf& bytesOf) {
  FuzzedDataProvider input(bytes.data(), bytes.size());
  const auto piece = input.ConsumeIntegralInRange<std::size_t>(1, 64);
  const auto sent = input.ConsumeRemainingBytes<std::uint8_t>();
  const auto find = [&](Stream& stream, std::vector<Bytes>& found) {
    while (const auto item = stream.next()) found.push_back(bytesOf(*item));
  };
  const auto read = [&](Stream& stream, std::size_t longest) {
    std::vector<Bytes> found;
    for (View rest(sent); !rest.empty(); rest = rest.subspan(std::min(longest, rest.size()))) {
      receive(stream, rest.first(std::min(longest, rest.size())));
      find(stream, found);
    }
    return found;
  };
  Stream whole;
  Stream pieces;
  std::vector<Bytes> found = read(whole, 0x10000);
  QVN_FUZZ_CHECK(read(pieces, piece) == found);
  QVN_FUZZ_CHECK(pieces.isPartial() == whole.isPartial());

  if constexpr (requires { whole.giveUpPartial(); }) {
    for (std::size_t steps = 0; whole.isPartial(); ++steps) {
      QVN_FUZZ_CHECK(steps <= sent.size());
      whole.giveUpPartial();
      find(whole, found);
    }
  }
  return found;
}

}  // namespace qvn::fuzz
