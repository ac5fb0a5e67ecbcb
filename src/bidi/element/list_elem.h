// ListElem: children by index, each named by its index in decimal.
#pragma once

#include "bidi/element/nonterminal_elem.h"

namespace qvn {

// Where a name is taken its leading decimal number is the index, 0 when there is none.
class ListElem : public NonterminalElem {
 public:
  class ListIterator : public ElementIterator {
   public:
    explicit ListIterator(const ListElem& list) : list_(list) {}
    bool hasNext() const override;
    Element* next() override;
    Element* nextRaw() override;
    std::string nextName() const override;
    std::uint32_t nextIndex() const override;

   private:
    const ListElem& list_;
    std::uint32_t index_ = 0;
  };

  ListElem() = default;
  ~ListElem() override;

  Element* getChildRaw(std::uint32_t index) const override;
  Element* getChildRaw(const std::string& name) const override;
  std::unique_ptr<ElementIterator> iterator() const override;
  // Inserts before the child of that index; the number of children appends.
  void addChild(std::uint32_t index, Element* element) override;
  // Never displaces a child: returns null.
  std::unique_ptr<Element> addChild(const std::string& name, Element* element) override;
  using Element::addChild;
  std::unique_ptr<Element> setChild(std::uint32_t index, Element* element) override;
  std::unique_ptr<Element> setChild(const std::string& name, Element* element) override;
  std::unique_ptr<Element> removeChild(std::uint32_t index) override;
  std::unique_ptr<Element> removeChild(const std::string& name) override;
  [[nodiscard]] std::vector<std::unique_ptr<Element>> removeChildren() override;
  std::uint32_t getNumChildren() const override;
  Element& copyTo(Element& target) const override;
  void accept(ElementVisitor& visitor) const override;
  bool isInstanceOf(std::string_view className) const override;

 protected:
  void abandonChildren(Remains& remains) noexcept override;
  std::unique_ptr<NonterminalElem> makeEmpty() const override;
  void appendCopy(const std::string& name, std::unique_ptr<Element> copy) override;

 private:
  void renameFrom(std::uint32_t index);

  std::vector<std::unique_ptr<Element>> children_;
};

}  // namespace qvn
