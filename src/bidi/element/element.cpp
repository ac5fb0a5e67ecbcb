#include "bidi/element/element.h"

#include "bidi/element/element_failure.h"

namespace qvn {

ElementIterator::~ElementIterator() = default;

Element::~Element() = default;

Element* Element::self() { return this; }

void Element::addChild(std::uint32_t index, std::unique_ptr<Element> element) {
  addChild(index, element.get());
  static_cast<void>(element.release());
}

std::unique_ptr<Element> Element::addChild(const std::string& name, std::unique_ptr<Element> element) {
  std::unique_ptr<Element> displaced = addChild(name, element.get());
  static_cast<void>(element.release());
  return displaced;
}

void Element::objectValue() const { failElement("Element::objectValue: not supported"); }

const std::uint8_t* Element::binaryValue() const { failElement("Element::binaryValue: not supported"); }

std::uint32_t Element::binaryLength() const { failElement("Element::binaryLength: not supported"); }

std::string Element::describe() const { return {}; }

void Element::added(const std::string& name, Element* parent) {
  if (parent_ != nullptr) failElement("Element::added: Element already added: " + name);
  name_ = name;
  parent_ = parent;
}

void Element::removed(Element* parent) {
  if (parent_ != parent) return;
  name_.clear();
  parent_ = nullptr;
}

const std::string& Element::getName() const { return name_; }

Element* Element::getParent() const { return parent_; }

Element& Element::copyTo(Element& target) const {
  target.name_.clear();
  target.parent_ = nullptr;
  return target;
}

void Element::accept(ElementVisitor& /*visitor*/) const {}

bool Element::isInstanceOf(std::string_view className) const { return className == "Element"; }

std::string Element::getPath() const {
  std::vector<const Element*> upwards;
  for (const Element* element = this; element != nullptr; element = element->getParent()) {
    upwards.push_back(element);
  }
  std::string path = upwards.back()->getName();
  for (auto element = upwards.rbegin() + 1; element != upwards.rend(); ++element) {
    path += "." + (*element)->getName();
  }
  return path;
}

Element::Remains::~Remains() {
  while (first_ != nullptr) {
    const std::unique_ptr<Element> element(first_);
    first_ = element->parent_;
    element->abandonChildren(*this);
  }
}

void Element::Remains::add(std::unique_ptr<Element> element) noexcept {
  element->parent_ = first_;
  first_ = element.release();
}

void Element::abandonChildren(Remains& /*remains*/) noexcept {}

}  // namespace qvn
