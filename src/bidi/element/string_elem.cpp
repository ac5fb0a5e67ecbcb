#include "bidi/element/string_elem.h"

#include "bidi/element/boolean_elem.h"
#include "bidi/element/element_failure.h"
#include "bidi/element/element_visitor.h"
#include "bidi/element/string_to_i.h"
#include "common/exception.h"
#include "common/text.h"

namespace qvn {

std::string StringElem::stringValue() const { return value_; }

std::int32_t StringElem::intValue() const {
  try {
    return StringToi(value_);
  } catch (const Win32Exception&) {
    const std::string lower = toLower(value_);
    if (booleanValue()) return 1;
    if (lower == "false" || lower == "n" || lower == "no") return 0;
  }
  failElement("StringElem::intValue: convert to integer" + value_);
}

bool StringElem::booleanValue() const { return BooleanElem(value_).booleanValue(); }

std::string StringElem::describe() const { return ": " + value_; }

std::unique_ptr<Element> StringElem::clone() const { return std::make_unique<StringElem>(value_, encoding_); }

void StringElem::accept(ElementVisitor& visitor) const { visitor.visitStringElem(*this); }

bool StringElem::isInstanceOf(std::string_view className) const {
  return className == "StringElem" || DataElem::isInstanceOf(className);
}

}  // namespace qvn
