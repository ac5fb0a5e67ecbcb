// What a device sends on its HID port: frames, and the events in them.
#include "ipv4/streams/hid_stream.h"

#include <cstdint>

#include "fuzz/check.h"
#include "fuzz/pieces.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  qvn::fuzz::findHoweverCut<qvn::ipv4::HidStream>({bytes, size}, [](const qvn::ipv4::HidFrame& frame) {
    const auto content = frame.content;
    QVN_FUZZ_CHECK(qvn::ipv4::parseHidEvent(content).has_value() == (content.size() == 8));
    qvn::fuzz::Bytes found = {frame.type};
    found.insert(found.end(), content.begin(), content.end());
    return found;
  });
  return 0;
}
