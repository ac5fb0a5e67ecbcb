#include "bidi/element/null_elem.h"

#include "bidi/element/element_failure.h"
#include "bidi/element/element_visitor.h"

namespace qvn {

std::string NullElem::stringValue() const { return {}; }

std::int32_t NullElem::intValue() const { failElement("NullElem::intValue: not supported"); }

bool NullElem::booleanValue() const { return false; }

std::string NullElem::describe() const { return ":NULL"; }

std::unique_ptr<Element> NullElem::clone() const { return std::make_unique<NullElem>(); }

void NullElem::accept(ElementVisitor& visitor) const { visitor.visitNullElem(*this); }

bool NullElem::isInstanceOf(std::string_view className) const {
  return className == "NullElem" || DataElem::isInstanceOf(className);
}

}  // namespace qvn
