// XMLSAXParserSimple: collects the first text under each tag name of a document.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "bidi/xml/expat_reader.h"

namespace qvn {

// Used for one document.
class XMLSAXParserSimple : private ExpatReader {
 public:
  using Values = std::map<std::string, std::string, std::less<>>;

  // False when the document is not well-formed.
  bool parse(std::string_view document);

  // Text counts for the tag opened last, whether that is closed or not.
  Values takeValues() { return std::move(values_); }

 private:
  void startTag(const char* name, const char** attributes) override;
  void endTag() override;
  void addText(std::string_view text) override;

  std::string latestName_;
  Values values_;
};

}  // namespace qvn
