// Blocks that are replies of an object store, or pretend to be, and documents that pretend to be requests.
#include "shared/streams/store_document.h"

#include <cstdint>
#include <string>
#include <vector>

#include "fuzz/check.h"

namespace {

// The value of an attribute of that text: in quotes, and without any.
void checkId(std::string_view id, std::string_view text) {
  if (id.empty()) return;
  QVN_FUZZ_CHECK(id.data() > text.data() && id.data() + id.size() < text.data() + text.size());
  const char quote = *(id.data() - 1);
  QVN_FUZZ_CHECK((quote == '"' || quote == '\'') && id.data()[id.size()] == quote);
  QVN_FUZZ_CHECK(id.find(quote) == std::string_view::npos);
  const std::string_view before(text.data(), static_cast<std::size_t>(id.data() - text.data()));
  QVN_FUZZ_CHECK(before.rfind("requestID") != std::string_view::npos);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using qvn::shared::answeredIdOf;
  using qvn::shared::requestIdOf;
  const std::vector<std::uint8_t> block(bytes, bytes + size);
  const std::string_view text(reinterpret_cast<const char*>(block.data()), block.size());
  const std::string_view asked = requestIdOf(text);
  const std::string_view answered = answeredIdOf(block);
  checkId(asked, text);
  checkId(answered, text);
  QVN_FUZZ_CHECK(asked.empty() || answered.empty());

  // What comes behind the id makes no difference to it.
  const std::string_view id = asked.empty() ? answered : asked;
  if (!id.empty()) {
    const std::vector<std::uint8_t> cut(bytes, bytes + (id.data() + id.size() + 1 - text.data()));
    const std::string_view cutText(reinterpret_cast<const char*>(cut.data()), cut.size());
    QVN_FUZZ_CHECK((asked.empty() ? answeredIdOf(cut) : requestIdOf(cutText)) == id);
  }
  // Nor does a frame around a bare document, nor that the frame's length promises more.
  if (size < 8 || text.front() == '<') {
    std::vector<std::uint8_t> framed = {0xAA, 1, 2, 3, 0xFF, 0xFF, 0xFF, 0xFF};
    framed.insert(framed.end(), block.begin(), block.end());
    QVN_FUZZ_CHECK(answeredIdOf(framed) == answered);
  }
  return 0;
}
