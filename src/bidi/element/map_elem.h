// MapElem: children by name, in the byte order of their names.
#pragma once

#include <map>

#include "bidi/element/nonterminal_elem.h"

namespace qvn {

// Where an index is taken its decimal form is the name.
class MapElem : public NonterminalElem {
 public:
  using Children = std::map<std::string, std::unique_ptr<Element>>;

  class ElementIteratorImpl : public ElementIterator {
   public:
    explicit ElementIteratorImpl(const MapElem& map) : map_(map), position_(map.children_.begin()) {}
    bool hasNext() const override;
    Element* next() override;
    Element* nextRaw() override;
    std::string nextName() const override;
    // The name as a number (StringToi).
    std::uint32_t nextIndex() const override;

   private:
    const MapElem& map_;
    Children::const_iterator position_;
  };

  MapElem() = default;
  ~MapElem() override;

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
  Element& copyTo(Element& target) const override;
  void accept(ElementVisitor& visitor) const override;
  bool isInstanceOf(std::string_view className) const override;

  // The child of that name, or null.
  Element* find(const std::string& name) const;

 protected:
  void abandonChildren(Remains& remains) noexcept override;
  std::unique_ptr<NonterminalElem> makeEmpty() const override;
  void appendCopy(const std::string& name, std::unique_ptr<Element> copy) override;

 private:
  Children children_;
};

}  // namespace qvn
