#include "bidi/element/nonterminal_elem.h"

#include "bidi/element/element_failure.h"
#include "common/exception.h"
#include "qvn/result_codes.h"

namespace qvn {

std::string NonterminalElem::stringValue() const {
  failElement("NonterminalElem::stringValue: not supported");
}

std::int32_t NonterminalElem::intValue() const { failElement("NonterminalElem::intValue: not supported"); }

bool NonterminalElem::booleanValue() const { failElement("NonterminalElem::booleanValue: not supported"); }

std::unique_ptr<Element> NonterminalElem::clone() const { return copyTree(Copy::Clone); }

std::unique_ptr<Element> NonterminalElem::duplicate() const { return copyTree(Copy::Duplicate); }

bool NonterminalElem::isInstanceOf(std::string_view className) const {
  return className == "NonterminalElem" || Element::isInstanceOf(className);
}

void NonterminalElem::checkChild(const char* operation, const Element* element) const {
  if (element == nullptr) failElement(std::string(operation) + ": No element", QRN_ERROR_INVALID_PARAMETER);
  const auto* container = dynamic_cast<const NonterminalElem*>(element);
  if (container == nullptr || (container != this && container->getNumChildren() == 0)) return;
  for (const Element* outer = this; outer != nullptr; outer = outer->getParent()) {
    if (outer == container) {
      failElement(std::string(operation) + ": Element would contain itself", QRN_ERROR_INVALID_PARAMETER);
    }
  }
}

std::unique_ptr<NonterminalElem> NonterminalElem::copyTree(Copy copy) const {
  struct Level {
    std::unique_ptr<ElementIterator> children;
    NonterminalElem* copied;
  };
  std::unique_ptr<NonterminalElem> root = makeEmpty();
  std::vector<Level> levels;
  levels.push_back({iterator(), root.get()});
  while (!levels.empty()) {
    ElementIterator& children = *levels.back().children;
    NonterminalElem& copied = *levels.back().copied;
    if (!children.hasNext()) {
      levels.pop_back();
      continue;
    }
    const std::string name = children.nextName();
    const Element& child = *children.next();
    if (child.isInstanceOf("NonterminalElem")) {
      const auto& container = static_cast<const NonterminalElem&>(child);
      std::unique_ptr<NonterminalElem> empty = container.makeEmpty();
      levels.push_back({container.iterator(), empty.get()});
      copied.appendCopy(name, std::move(empty));
      continue;
    }
    try {
      copied.appendCopy(name, copy == Copy::Clone ? child.clone() : child.duplicate());
    } catch (const Win32Exception&) {
      if (copy == Copy::Duplicate) throw;
      levels.pop_back();
    }
  }
  return root;
}

}  // namespace qvn
