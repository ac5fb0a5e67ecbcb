#include "bidi/element/list_elem.h"

#include <cstdlib>
#include <utility>

#include "bidi/element/element_failure.h"
#include "bidi/element/element_visitor.h"

namespace qvn {
namespace {

std::uint32_t indexOf(const std::string& name) {
  return static_cast<std::uint32_t>(std::strtol(name.c_str(), nullptr, 10));
}

[[noreturn]] void failNotFound(const char* operation, std::uint32_t index) {
  failElement("ListElem::" + std::string(operation) + ":" + std::to_string(index) + "not found");
}

}  // namespace

bool ListElem::ListIterator::hasNext() const { return index_ < list_.getNumChildren(); }

Element* ListElem::ListIterator::next() { return nextRaw()->self(); }

Element* ListElem::ListIterator::nextRaw() {
  Element* child = list_.getChildRaw(index_);
  ++index_;
  return child;
}

std::string ListElem::ListIterator::nextName() const { return std::to_string(index_); }

std::uint32_t ListElem::ListIterator::nextIndex() const {
  if (!hasNext()) failElement("ListElem::nextIndex: end reached");
  return index_;
}

ListElem::~ListElem() {
  Remains remains;
  ListElem::abandonChildren(remains);
}

Element* ListElem::getChildRaw(std::uint32_t index) const {
  if (index >= children_.size()) failNotFound("getChildRaw", index);
  return children_[index].get();
}

Element* ListElem::getChildRaw(const std::string& name) const { return getChildRaw(indexOf(name)); }

std::unique_ptr<ElementIterator> ListElem::iterator() const { return std::make_unique<ListIterator>(*this); }

void ListElem::addChild(std::uint32_t index, Element* element) {
  if (index > children_.size()) {
    failElement("ListElem::addChild: Index " + std::to_string(index) + " out of bound");
  }
  checkChild("ListElem::addChild", element);
  element->added(std::to_string(index), this);
  // The place first: if there is no memory for it, the element is still the caller's.
  children_.emplace(children_.begin() + index)->reset(element);
  renameFrom(index + 1);
}

std::unique_ptr<Element> ListElem::addChild(const std::string& name, Element* element) {
  addChild(indexOf(name), element);
  return nullptr;
}

std::unique_ptr<Element> ListElem::setChild(std::uint32_t index, Element* element) {
  if (index >= children_.size()) failNotFound("setChild", index);
  checkChild("ListElem::setChild", element);
  element->added(std::to_string(index), this);
  std::unique_ptr<Element> previous = std::exchange(children_[index], std::unique_ptr<Element>(element));
  previous->removed(this);
  return previous;
}

std::unique_ptr<Element> ListElem::setChild(const std::string& name, Element* element) {
  return setChild(indexOf(name), element);
}

std::unique_ptr<Element> ListElem::removeChild(std::uint32_t index) {
  if (index >= children_.size()) failNotFound("removeChild", index);
  std::unique_ptr<Element> child = std::move(children_[index]);
  children_.erase(children_.begin() + index);
  child->removed(this);
  renameFrom(index);
  return child;
}

std::unique_ptr<Element> ListElem::removeChild(const std::string& name) { return removeChild(indexOf(name)); }

std::vector<std::unique_ptr<Element>> ListElem::removeChildren() {
  for (const auto& child : children_) child->removed(this);
  return std::exchange(children_, {});
}

std::uint32_t ListElem::getNumChildren() const { return static_cast<std::uint32_t>(children_.size()); }

Element& ListElem::copyTo(Element& target) const {
  Element::copyTo(target);
  auto* list = dynamic_cast<ListElem*>(&target);
  if (list == nullptr) return target;
  // All copies are made first: the target may be this list or part of it.
  std::uint32_t index = 0;
  for (std::unique_ptr<Element>& child : clone()->removeChildren()) list->addChild(index++, std::move(child));
  return target;
}

void ListElem::accept(ElementVisitor& visitor) const { visitor.visitListElem(*this); }

bool ListElem::isInstanceOf(std::string_view className) const {
  return className == "ListElem" || NonterminalElem::isInstanceOf(className);
}

void ListElem::abandonChildren(Remains& remains) noexcept {
  for (std::unique_ptr<Element>& child : children_) remains.add(std::move(child));
  children_.clear();
}

std::unique_ptr<NonterminalElem> ListElem::makeEmpty() const { return std::make_unique<ListElem>(); }

void ListElem::appendCopy(const std::string& name, std::unique_ptr<Element> copy) {
  copy->added(name, this);
  children_.push_back(std::move(copy));
}

void ListElem::renameFrom(std::uint32_t index) {
  for (; index < children_.size(); ++index) children_[index]->setName(std::to_string(index));
}

}  // namespace qvn
