// What a printer answers to GET_DEVICE_ID.
#include "usb1/descriptors/device_id.h"

#include <cstdint>
#include <string>

#include "fuzz/check.h"
#include "shared/base/plain_text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const qvn::usb1::DeviceId id = qvn::usb1::parseDeviceId({bytes, size});
  for (const std::string& text : {id.model, id.serial}) {
    QVN_FUZZ_CHECK(text.empty() || qvn::shared::isPlainText(text));
  }
  QVN_FUZZ_CHECK(id.family.empty() || id.family == "CpdPrinter" || id.family == "BpdPrinter");
  return 0;
}
