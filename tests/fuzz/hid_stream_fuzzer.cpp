// What a device sends on its HID port: the frames are what it sent, however the network cuts the bytes.
#include "ipv4/streams/hid_stream.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "fuzz/check.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider input(bytes, size);
  const std::size_t piece = input.ConsumeIntegralInRange<std::size_t>(1, 64);
  const auto sent = input.ConsumeRemainingBytes<std::uint8_t>();

  qvn::ipv4::HidStream stream;
  std::size_t framed = 0;
  for (std::size_t received = 0; received < sent.size();) {
    const std::size_t length = std::min(piece, sent.size() - received);
    std::copy_n(sent.begin() + static_cast<std::ptrdiff_t>(received), length, stream.room().begin());
    stream.add(length);
    received += length;
    while (const auto frame = stream.next()) {
      QVN_FUZZ_CHECK(frame->type == sent[framed]);
      QVN_FUZZ_CHECK(frame->content.size() == (sent[framed + 1] | std::size_t{sent[framed + 2]} << 8));
      QVN_FUZZ_CHECK(std::equal(frame->content.begin(), frame->content.end(),
                                sent.begin() + static_cast<std::ptrdiff_t>(framed + 3)));
      QVN_FUZZ_CHECK(qvn::ipv4::parseHidEvent(frame->content).has_value() == (frame->content.size() == 8));
      framed += 3 + frame->content.size();
    }
    QVN_FUZZ_CHECK(framed <= received);
    QVN_FUZZ_CHECK(stream.isPartial() == (framed < received));
  }
  stream.giveUpPartial();
  QVN_FUZZ_CHECK(!stream.isPartial() && !stream.next());
  return 0;
}
