#include "bidi/element/terminal_elem.h"

#include "bidi/element/element_failure.h"
#include "qvn/result_codes.h"

namespace qvn {

Element* TerminalElem::getChildRaw(std::uint32_t index) const { return getChildRaw(std::to_string(index)); }

Element* TerminalElem::getChildRaw(const std::string& name) const { fail("getChildRaw(" + name + ")"); }

std::unique_ptr<ElementIterator> TerminalElem::iterator() const { fail("iterator()"); }

void TerminalElem::addChild(std::uint32_t index, Element* element) {
  addChild(std::to_string(index), element);
}

std::unique_ptr<Element> TerminalElem::addChild(const std::string& name, Element* /*element*/) {
  fail("addChild(" + name + ")");
}

std::unique_ptr<Element> TerminalElem::setChild(std::uint32_t index, Element* element) {
  return setChild(std::to_string(index), element);
}

std::unique_ptr<Element> TerminalElem::setChild(const std::string& name, Element* /*element*/) {
  fail("setChild(" + name + ")");
}

std::unique_ptr<Element> TerminalElem::removeChild(std::uint32_t index) {
  return removeChild(std::to_string(index));
}

std::unique_ptr<Element> TerminalElem::removeChild(const std::string& name) {
  fail("removeChild(" + name + ")");
}

std::vector<std::unique_ptr<Element>> TerminalElem::removeChildren() { fail("removeChildren()"); }

std::uint32_t TerminalElem::getNumChildren() const { fail("getNumChildren()"); }

bool TerminalElem::isInstanceOf(std::string_view className) const {
  return className == "TerminalElem" || Element::isInstanceOf(className);
}

void TerminalElem::fail(const std::string& call) const {
  failElement("TerminalElem::" + call + " not supported on " + getPath(), QRN_ERROR_INVALID_PARAMETER);
}

}  // namespace qvn
