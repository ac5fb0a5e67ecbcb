#include "bidi/element/boolean_elem.h"

#include "bidi/element/element_visitor.h"
#include "common/text.h"

namespace qvn {

BooleanElem::BooleanElem(std::string_view text) {
  const std::string lower = toLower(text);
  value_ = lower == "true" || lower == "yes" || lower == "y";
}

std::string BooleanElem::stringValue() const { return value_ ? "true" : "false"; }

std::int32_t BooleanElem::intValue() const { return value_ ? 1 : 0; }

bool BooleanElem::booleanValue() const { return value_; }

std::string BooleanElem::describe() const { return ": " + stringValue(); }

std::unique_ptr<Element> BooleanElem::clone() const { return std::make_unique<BooleanElem>(value_); }

void BooleanElem::accept(ElementVisitor& visitor) const { visitor.visitBooleanElem(*this); }

bool BooleanElem::isInstanceOf(std::string_view className) const {
  return className == "BooleanElem" || DataElem::isInstanceOf(className);
}

}  // namespace qvn
