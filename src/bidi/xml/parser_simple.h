// ParserSimple: a flat run of tagged values, "<name>value</name>" each, read into a map.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace qvn {

// Of several values with one name the first counts, and of a value the first piece that Expat reports: it
// ends at a line break, a reference or a comment, and is that line break or what the reference stands for
// when the value begins so. Names are XML's: they do not begin with a digit.
class ParserSimple {
 public:
  explicit ParserSimple(std::string_view text);

  // Empty when the text is not well-formed.
  const std::map<std::string, std::string, std::less<>>& values() const { return values_; }

 private:
  std::map<std::string, std::string, std::less<>> values_;
};

}  // namespace qvn
