// XMLVisitor: writes one method document. The message in it is the method's name, its arguments as text, and
// for some methods one argument that is an element.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "bidi/element/element.h"
#include "bidi/element/element_visitor.h"

namespace qvn {

class ElementIterator;

// Whether the text holds "<", ">" or "&". Names and values are written as they stand, so a text with markup
// would change the document: whoever takes a text from outside asks first.
bool hasMarkup(std::string_view text);

// Of the name of a map's child, in bytes.
inline constexpr std::size_t kMaxChildNameLength = 119;

enum class MethodKind : std::uint32_t {
  GetAttribute = 3,    // objName, attribName
  SetAttribute = 4,    // objName, attribName; element: value
  CallMethod = 5,      // objName, method; element: params
  CallRule = 6,        // ruleName, params; element: the rest of params
  AddObserver = 7,     // objName, event, observer
  RemoveObserver = 8,  // objName, event, observer
  Instantiate = 9,     // className, objName; element: params
  Event = 10,          // observer, objName, event; element: data; no request id
  CallVoidMethod = 11  // objName, method; element: params
};

// Used for one document: construct, let the element accept the visitor where the kind has one, finish.
//
// A tag with an attribute has at most 383 bytes, a child's name at most 119, and a document at most 64 MiB
// (indentation grows with the depth of a tree): anything more is refused with a Win32Exception of code 87.
class XMLVisitor : public ElementVisitor {
 public:
  XMLVisitor(MethodKind kind, std::uint32_t requestId, std::string_view text1, std::string_view text2,
             std::string_view text3 = {});
  ~XMLVisitor() override;

  void visitComposite(const NonterminalElem& composite) override;
  void visitMapElem(const MapElem& map) override;
  void visitListElem(const ListElem& list) override;
  void visitIntegerElem(const IntegerElem& element) override;
  void visitBooleanElem(const BooleanElem& element) override;
  void visitDoubleElem(const DoubleElem& element) override;
  void visitStringElem(const StringElem& element) override;
  void visitBinaryElem(const BinaryElem& element) override;
  void visitNullElem(const NullElem& element) override;
  void visitMessage(const Exception& exception) override;

  // Closes the document and returns its text.
  std::string finish();

 private:
  // A container whose children are being written.
  struct Open {
    std::unique_ptr<ElementIterator> children;
    std::string_view closingTag;
    bool named;            // each child is wrapped in a tag with its name
    bool inChild = false;  // such a tag is open
  };

  void writeContainer(const NonterminalElem& container, std::string_view closingTag, bool named);
  void writeNextChild();
  void openArgument(std::string_view name);
  // A tag with an attribute, within the limit for such.
  void appendTag(std::string_view before, std::string_view attribute, std::string_view after);
  // A new line, and the tag on it.
  void appendLine(std::string_view tag);
  void startLine();
  void append(std::string_view text);
  void checkRoom(std::size_t length) const;

  MethodKind kind_;
  std::string text_;
  std::int32_t level_ = 0;
  std::vector<Open> open_;
  bool writing_ = false;  // the open containers are being worked off
};

}  // namespace qvn
