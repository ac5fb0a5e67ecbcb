// Texts of any kind decoded, and bytes of any kind there and back.
#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "bidi/element/base64.h"
#include "fuzz/check.h"

namespace {

using namespace qvn;

bool isBase64(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' || c == '/' ||
         c == '=';
}

// Characters that are passed over change nothing, wherever they stand.
void compareWithoutStrays(std::string_view text) {
  std::string clean;
  std::copy_if(text.begin(), text.end(), std::back_inserter(clean), isBase64);
  QVN_FUZZ_CHECK(decodeBase64(text, text.size()) == decodeBase64(clean, text.size()));
}

// A limit cuts and does nothing else.
void compareWithLimit(std::string_view text) {
  std::vector<std::uint8_t> bytes = decodeBase64(text, text.size());
  QVN_FUZZ_CHECK(bytes.size() <= text.size() / 4 * 3);
  const std::size_t limit = bytes.size() / 2;
  bytes.resize(limit);
  QVN_FUZZ_CHECK(decodeBase64(text, limit) == bytes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  compareWithoutStrays(text);
  compareWithLimit(text);
  const std::string encoded = encodeBase64({bytes, size});
  QVN_FUZZ_CHECK(std::all_of(encoded.begin(), encoded.end(), isBase64));
  QVN_FUZZ_CHECK(decodeBase64(encoded, size) == std::vector<std::uint8_t>(bytes, bytes + size));
  return 0;
}
