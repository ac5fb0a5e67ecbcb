// What a device sends on its HID port: frames, and the events in them.
#include "shared/streams/hid_stream.h"

#include <cstdint>

#include "fuzz/check.h"
#include "fuzz/pieces.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  qvn::fuzz::findHoweverCut<qvn::shared::HidStream>({bytes, size}, [](const qvn::shared::HidFrame& frame) {
    const auto content = frame.content;
    QVN_FUZZ_CHECK(qvn::shared::parseHidEvent(content).has_value() == (content.size() == 8));
    qvn::fuzz::Bytes found = {frame.type};
    found.insert(found.end(), content.begin(), content.end());
    return found;
  });
  return 0;
}
