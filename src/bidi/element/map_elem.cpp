#include "bidi/element/map_elem.h"

#include <utility>

#include "bidi/element/element_failure.h"
#include "bidi/element/element_visitor.h"
#include "bidi/element/string_to_i.h"

namespace qvn {
namespace {

[[noreturn]] void failNotFound(const char* operation, const std::string& name) {
  failElement("MapElem::" + std::string(operation) + ":" + name + "not found");
}

}  // namespace

bool MapElem::ElementIteratorImpl::hasNext() const { return position_ != map_.children_.end(); }

Element* MapElem::ElementIteratorImpl::next() { return nextRaw()->self(); }

Element* MapElem::ElementIteratorImpl::nextRaw() {
  if (!hasNext()) failElement("MapElem::ElementIteratorImpl.next: end reached");
  return (position_++)->second.get();
}

std::string MapElem::ElementIteratorImpl::nextName() const {
  if (!hasNext()) failElement("MapElem::ElementIteratorImpl.nextName: end reached");
  return position_->first;
}

std::uint32_t MapElem::ElementIteratorImpl::nextIndex() const {
  return static_cast<std::uint32_t>(StringToi(nextName()));
}

MapElem::~MapElem() {
  Remains remains;
  MapElem::abandonChildren(remains);
}

Element* MapElem::getChildRaw(std::uint32_t index) const { return getChildRaw(std::to_string(index)); }

Element* MapElem::getChildRaw(const std::string& name) const {
  Element* child = find(name);
  if (child == nullptr) failNotFound("getChildRaw", name);
  return child;
}

std::unique_ptr<ElementIterator> MapElem::iterator() const {
  return std::make_unique<ElementIteratorImpl>(*this);
}

void MapElem::addChild(std::uint32_t index, Element* element) { addChild(std::to_string(index), element); }

std::unique_ptr<Element> MapElem::addChild(const std::string& name, Element* element) {
  checkChild("MapElem::addChild", element);
  element->added(name, this);
  return std::exchange(children_[name], std::unique_ptr<Element>(element));
}

std::unique_ptr<Element> MapElem::setChild(std::uint32_t index, Element* element) {
  return setChild(std::to_string(index), element);
}

std::unique_ptr<Element> MapElem::setChild(const std::string& name, Element* element) {
  if (find(name) == nullptr) failNotFound("setChild", name);
  std::unique_ptr<Element> previous = addChild(name, element);
  previous->removed(this);
  return previous;
}

std::unique_ptr<Element> MapElem::removeChild(std::uint32_t index) {
  return removeChild(std::to_string(index));
}

std::unique_ptr<Element> MapElem::removeChild(const std::string& name) {
  const auto position = children_.find(name);
  if (position == children_.end()) failNotFound("removeChild", name);
  std::unique_ptr<Element> child = std::move(position->second);
  children_.erase(position);
  child->removed(this);
  return child;
}

std::vector<std::unique_ptr<Element>> MapElem::removeChildren() {
  std::vector<std::unique_ptr<Element>> removed;
  removed.reserve(children_.size());
  for (auto& entry : children_) {
    entry.second->removed(this);
    removed.push_back(std::move(entry.second));
  }
  children_.clear();
  return removed;
}

std::uint32_t MapElem::getNumChildren() const { return static_cast<std::uint32_t>(children_.size()); }

Element& MapElem::copyTo(Element& target) const {
  Element::copyTo(target);
  auto* map = dynamic_cast<MapElem*>(&target);
  if (map == nullptr) return target;
  // All copies are made first: the target may be this map or part of it.
  const std::unique_ptr<Element> copy = clone();
  Children children = std::exchange(static_cast<MapElem&>(*copy).children_, {});
  for (auto& entry : children) {
    entry.second->removed(copy.get());
    map->addChild(entry.first, std::move(entry.second));
  }
  return target;
}

void MapElem::accept(ElementVisitor& visitor) const { visitor.visitMapElem(*this); }

bool MapElem::isInstanceOf(std::string_view className) const {
  return className == "MapElem" || NonterminalElem::isInstanceOf(className);
}

Element* MapElem::find(const std::string& name) const {
  const auto position = children_.find(name);
  return position == children_.end() ? nullptr : position->second.get();
}

void MapElem::abandonChildren(Remains& remains) noexcept {
  for (auto& entry : children_) remains.add(std::move(entry.second));
  children_.clear();
}

std::unique_ptr<NonterminalElem> MapElem::makeEmpty() const { return std::make_unique<MapElem>(); }

void MapElem::appendCopy(const std::string& name, std::unique_ptr<Element> copy) {
  copy->added(name, this);
  children_.emplace_hint(children_.end(), name, std::move(copy));
}

}  // namespace qvn
