// Element: a node of the value trees exchanged with devices (arguments, results, attribute values).
// ElementIterator: walks the children of one.
//
// Every failure is a Win32Exception without a file name. Trees may be of any depth: nothing here recurses.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace qvn {

class Element;
class ElementVisitor;

// Valid until the container changes.
class ElementIterator {
 public:
  virtual ~ElementIterator();

  virtual bool hasNext() const = 0;
  // The current child, which the container keeps; moves on. Fails at the end.
  virtual Element* next() = 0;
  virtual Element* nextRaw() = 0;
  // The current child's name and index, without moving on.
  virtual std::string nextName() const = 0;
  virtual std::uint32_t nextIndex() const = 0;
};

// An element is free (no parent, empty name) or placed in exactly one container, which owns it and destroys
// it with itself. Not synchronised.
class Element {
 public:
  Element() = default;
  Element(const Element&) = delete;
  Element& operator=(const Element&) = delete;
  virtual ~Element();

  // The element that stands for this one: itself.
  virtual Element* self();

  // The child, which stays the container's. Fails when there is none.
  virtual Element* getChildRaw(std::uint32_t index) const = 0;
  virtual Element* getChildRaw(const std::string& name) const = 0;

  virtual std::unique_ptr<ElementIterator> iterator() const = 0;

  // Take over a free element. A call that fails changes nothing and leaves the element with the caller: null,
  // an element placed already, and one that this element is part of are refused.
  virtual void addChild(std::uint32_t index, Element* element) = 0;
  // Returns the child that had the name before, or null. It keeps its name and its parent as they were.
  virtual std::unique_ptr<Element> addChild(const std::string& name, Element* element) = 0;
  void addChild(std::uint32_t index, std::unique_ptr<Element> element);
  std::unique_ptr<Element> addChild(const std::string& name, std::unique_ptr<Element> element);

  // Replace an existing child and return it, free. The same rules hold as for addChild.
  virtual std::unique_ptr<Element> setChild(std::uint32_t index, Element* element) = 0;
  virtual std::unique_ptr<Element> setChild(const std::string& name, Element* element) = 0;

  // Take a child out and return it, free.
  virtual std::unique_ptr<Element> removeChild(std::uint32_t index) = 0;
  virtual std::unique_ptr<Element> removeChild(const std::string& name) = 0;
  // Takes all children out and returns them, free, in their order.
  [[nodiscard]] virtual std::vector<std::unique_ptr<Element>> removeChildren() = 0;

  virtual std::uint32_t getNumChildren() const = 0;

  // The value in another type; each class says what it can be read as.
  virtual std::string stringValue() const = 0;
  virtual std::int32_t intValue() const = 0;
  virtual bool booleanValue() const = 0;
  virtual void objectValue() const;
  // The element's own bytes, null when there are none.
  virtual const std::uint8_t* binaryValue() const;
  virtual std::uint32_t binaryLength() const;

  // The value as a log line shows it.
  virtual std::string describe() const;

  // What a container tells the elements it takes in and gives away.
  virtual void added(const std::string& name, Element* parent);
  virtual void removed(Element* parent);

  virtual const std::string& getName() const;
  virtual Element* getParent() const;

  // Makes `target` free and adds copies of the children to it when it is of the same class.
  virtual Element& copyTo(Element& target) const;
  // Free copies. A child that cannot be cloned ends the copy of its container with what is there so far; one
  // that cannot be duplicated fails the whole.
  virtual std::unique_ptr<Element> clone() const = 0;
  virtual std::unique_ptr<Element> duplicate() const = 0;

  // Calls the visitor's operation for this class.
  virtual void accept(ElementVisitor& visitor) const;

  // Whether this is the name of the element's class or of one of its bases.
  virtual bool isInstanceOf(std::string_view className) const;

  Element* getChild(std::uint32_t index) const { return getChildRaw(index)->self(); }
  Element* getChild(const std::string& name) const { return getChildRaw(name)->self(); }

  // The names from the root to this element, joined by "."; the root's, mostly empty, comes first.
  std::string getPath() const;

  void setName(const std::string& name) { name_ = name; }

 protected:
  // Destroys elements and all that they own. The children of what is being destroyed are chained up instead
  // of destroyed in turn, so depth costs neither stack nor memory.
  class Remains {
   public:
    Remains() = default;
    Remains(const Remains&) = delete;
    Remains& operator=(const Remains&) = delete;
    ~Remains();
    void add(std::unique_ptr<Element> element) noexcept;

   private:
    Element* first_ = nullptr;
  };

  // Hands the children over for destruction.
  virtual void abandonChildren(Remains& remains) noexcept;

 private:
  std::string name_;
  Element* parent_ = nullptr;  // while it is chained up in Remains: the next one there
};

}  // namespace qvn
