// Runs of tagged values of any kind: what is found is in the text, and is found again when written back.
#include <string>
#include <string_view>

#include "bidi/xml/parser_simple.h"
#include "bidi/xml/xml_visitor.h"
#include "fuzz/check.h"

namespace {

using namespace qvn;

// A value with a line break comes in pieces, of which the first counts.
bool isOnePiece(const std::string& value) {
  return !hasMarkup(value) && value.find_first_of("\r\n") == std::string::npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  const ParserSimple parser(text);
  std::string written;
  for (const auto& [name, value] : parser.values()) {
    QVN_FUZZ_CHECK(text.find("<" + name) != std::string_view::npos);
    QVN_FUZZ_CHECK(!value.empty());
    if (!isOnePiece(value)) return 0;
    written += "<" + name + ">" + value + "</" + name + ">";
  }
  QVN_FUZZ_CHECK(ParserSimple(written).values() == parser.values());
  return 0;
}
