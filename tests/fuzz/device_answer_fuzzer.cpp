// Datagrams that answer, or pretend to answer, a discovery.
#include <algorithm>
#include <cstdint>
#include <string_view>

#include "fuzz/check.h"
#include "ipv4/discovery/device_answer.h"

namespace {

// Nothing that could break out of its element of an attribute text.
bool isHarmless(std::string_view value) {
  return std::all_of(value.begin(), value.end(),
                     [](char c) { return c >= ' ' && c <= '~' && c != '<' && c != '>'; });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const auto answer = qvn::ipv4::parseAnswer({reinterpret_cast<const char*>(bytes), size}, "token");
  if (!answer) return 0;
  QVN_FUZZ_CHECK(answer->printPort != 0 && (answer->bidiPort != 0 || answer->family == "BpdPrinter"));
  QVN_FUZZ_CHECK(!answer->family.empty() && !answer->model.empty() && !answer->serial.empty());
  for (const std::string_view value : {answer->family, answer->model, answer->serial, answer->name}) {
    QVN_FUZZ_CHECK(isHarmless(value));
  }
  return 0;
}
