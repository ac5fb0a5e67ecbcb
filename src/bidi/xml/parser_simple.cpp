#include "bidi/xml/parser_simple.h"

#include "bidi/xml/xml_sax_parser_simple.h"

namespace qvn {
namespace {

// Makes a document of the run.
constexpr std::string_view kRoot = "zzz_Dummy_zzz";

}  // namespace

ParserSimple::ParserSimple(std::string_view text) {
  XMLSAXParserSimple parser;
  const std::string root(kRoot);
  if (!parser.parse("<" + root + ">" + std::string(text) + "</" + root + ">")) return;
  values_ = parser.takeValues();
  values_.erase(root);
}

}  // namespace qvn
