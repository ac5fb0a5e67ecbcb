// TerminalElem: the base of the elements without children. Every operation on children fails with code 87.
#pragma once

#include "bidi/element/element.h"

namespace qvn {

class TerminalElem : public Element {
 public:
  Element* getChildRaw(std::uint32_t index) const override;
  Element* getChildRaw(const std::string& name) const override;
  std::unique_ptr<ElementIterator> iterator() const override;
  void addChild(std::uint32_t index, Element* element) override;
  std::unique_ptr<Element> addChild(const std::string& name, Element* element) override;
  using Element::addChild;
  std::unique_ptr<Element> setChild(std::uint32_t index, Element* element) override;
  std::unique_ptr<Element> setChild(const std::string& name, Element* element) override;
  std::unique_ptr<Element> removeChild(std::uint32_t index) override;
  std::unique_ptr<Element> removeChild(const std::string& name) override;
  [[nodiscard]] std::vector<std::unique_ptr<Element>> removeChildren() override;
  std::uint32_t getNumChildren() const override;
  bool isInstanceOf(std::string_view className) const override;

 private:
  [[noreturn]] void fail(const std::string& call) const;
};

}  // namespace qvn
