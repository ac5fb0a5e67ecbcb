// NonterminalElem: the base of the elements that have children and no value of their own.
#pragma once

#include "bidi/element/element.h"

namespace qvn {

class NonterminalElem : public Element {
 public:
  std::string stringValue() const override;
  std::int32_t intValue() const override;
  bool booleanValue() const override;
  std::unique_ptr<Element> clone() const override;
  std::unique_ptr<Element> duplicate() const override;
  bool isInstanceOf(std::string_view className) const override;

 protected:
  // Fails for an element that must not become a child of this one: null, and one that this one is part of.
  // `operation` begins the failure's text.
  void checkChild(const char* operation, const Element* element) const;

  // A new container of the same class.
  virtual std::unique_ptr<NonterminalElem> makeEmpty() const = 0;
  // Adds the copy of a child of that name behind those added so.
  virtual void appendCopy(const std::string& name, std::unique_ptr<Element> copy) = 0;

 private:
  enum class Copy { Clone, Duplicate };
  std::unique_ptr<NonterminalElem> copyTree(Copy copy) const;
};

}  // namespace qvn
