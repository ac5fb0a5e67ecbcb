// ElementVisitor: an operation on an element, chosen by the element's class.
#pragma once

namespace qvn {

class BinaryElem;
class BooleanElem;
class DoubleElem;
class Element;
class Exception;
class IntegerElem;
class ListElem;
class MapElem;
class NonterminalElem;
class NullElem;
class StringElem;

class ElementVisitor {
 public:
  virtual void visitElement(const Element& element);
  // A container that is part of a composite; called by the visitor's user.
  virtual void visitComposite(const NonterminalElem& composite) = 0;
  virtual void visitMapElem(const MapElem& map) = 0;
  virtual void visitListElem(const ListElem& list) = 0;
  virtual void visitIntegerElem(const IntegerElem& element) = 0;
  virtual void visitBooleanElem(const BooleanElem& element) = 0;
  virtual void visitDoubleElem(const DoubleElem& element) = 0;
  virtual void visitStringElem(const StringElem& element) = 0;
  virtual void visitBinaryElem(const BinaryElem& element) = 0;
  virtual void visitNullElem(const NullElem& element) = 0;
  // The failure that a message tells of; called by the visitor's user.
  virtual void visitMessage(const Exception& exception) = 0;
  virtual ~ElementVisitor();
};

}  // namespace qvn
