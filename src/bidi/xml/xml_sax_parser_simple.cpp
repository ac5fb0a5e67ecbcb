#include "bidi/xml/xml_sax_parser_simple.h"

namespace qvn {

bool XMLSAXParserSimple::parse(std::string_view document) { return read(document, Extent::Whole); }

void XMLSAXParserSimple::startTag(const char* name, const char** /*attributes*/) { latestName_ = name; }

void XMLSAXParserSimple::endTag() {}

void XMLSAXParserSimple::addText(std::string_view text) { values_.try_emplace(latestName_, text); }

}  // namespace qvn
