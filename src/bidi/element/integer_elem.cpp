#include "bidi/element/integer_elem.h"

#include "bidi/element/element_visitor.h"

namespace qvn {

std::string IntegerElem::stringValue() const { return std::to_string(value_); }

std::int32_t IntegerElem::intValue() const { return value_; }

bool IntegerElem::booleanValue() const { return value_ != 0; }

std::string IntegerElem::describe() const { return ": " + stringValue(); }

std::unique_ptr<Element> IntegerElem::clone() const { return std::make_unique<IntegerElem>(value_); }

void IntegerElem::accept(ElementVisitor& visitor) const { visitor.visitIntegerElem(*this); }

bool IntegerElem::isInstanceOf(std::string_view className) const {
  return className == "IntegerElem" || DataElem::isInstanceOf(className);
}

}  // namespace qvn
