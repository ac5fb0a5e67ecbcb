// What printers announce about themselves: a line each for the name and the texts.
#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/check.h"
#include "ipv4/discovery/services.h"
#include "shared/base/plain_text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace qvn::ipv4;
  std::string_view input(reinterpret_cast<const char*>(bytes), size);
  Service service{"", {0x7F000001, 9100}, {}};
  std::string* const parts[] = {&service.name, &service.texts["usb_ser"], &service.texts["uuid"],
                                &service.texts["ty"], &service.texts["product"]};
  for (std::string* part : parts) {
    const std::size_t end = std::min(input.find('\n'), input.size());
    *part = input.substr(0, end);
    input.remove_prefix(std::min(end + 1, input.size()));
  }
  const auto device = describeService(service);
  if (!device) return 0;
  for (const std::string_view text : {device->family, device->model, device->serial, device->name}) {
    QVN_FUZZ_CHECK(qvn::shared::isPlainText(text));
  }
  return 0;
}
