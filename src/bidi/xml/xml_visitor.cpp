#include "bidi/xml/xml_visitor.h"

#include <algorithm>
#include <array>
#include <utility>

#include "bidi/element/base64.h"
#include "bidi/element/binary_elem.h"
#include "bidi/element/boolean_elem.h"
#include "bidi/element/double_elem.h"
#include "bidi/element/element_failure.h"
#include "bidi/element/integer_elem.h"
#include "bidi/element/list_elem.h"
#include "bidi/element/map_elem.h"
#include "bidi/element/nonterminal_elem.h"
#include "bidi/element/null_elem.h"
#include "bidi/element/string_elem.h"
#include "common/exception.h"
#include "qvn/result_codes.h"

namespace qvn {
namespace {

constexpr std::size_t kMaxTagLength = 383;
constexpr std::size_t kMaxDocumentLength = std::size_t{64} << 20;

constexpr std::string_view kLineEnd = "\r\n";

struct Method {
  MethodKind kind;
  std::string_view name;
  std::array<std::string_view, 3> arguments;  // as text
  std::string_view element;                   // the argument that is an element, left open for it
};

constexpr Method kMethods[] = {
    {MethodKind::GetAttribute, "getAttribute", {"objName", "attribName"}, ""},
    {MethodKind::SetAttribute, "setAttribute", {"objName", "attribName"}, "value"},
    {MethodKind::CallMethod, "callMethod", {"objName", "method"}, "params"},
    {MethodKind::CallRule, "callRule", {"ruleName"}, "params"},
    {MethodKind::AddObserver, "addObserver", {"objName", "event", "observer"}, ""},
    {MethodKind::RemoveObserver, "removeObserver", {"objName", "event", "observer"}, ""},
    {MethodKind::Instantiate, "instantiate", {"className", "objName"}, "params"},
    {MethodKind::Event, "event", {"observer", "objName", "event"}, "data"},
    {MethodKind::CallVoidMethod, "callVoidMethod", {"objName", "method"}, "params"},
};

[[noreturn]] void refuse(const std::string& what) {
  failElement("XMLVisitor: " + what, QRN_ERROR_INVALID_PARAMETER);
}

const Method& methodOf(MethodKind kind) {
  const auto* method = std::find_if(std::begin(kMethods), std::end(kMethods),
                                    [kind](const Method& candidate) { return candidate.kind == kind; });
  if (method == std::end(kMethods)) {
    refuse("no method of kind " + std::to_string(static_cast<std::uint32_t>(kind)));
  }
  return *method;
}

}  // namespace

bool hasMarkup(std::string_view text) { return text.find_first_of("<>&") != std::string_view::npos; }

XMLVisitor::XMLVisitor(MethodKind kind, std::uint32_t requestId, std::string_view text1,
                       std::string_view text2, std::string_view text3)
    : kind_(kind) {
  const Method& method = methodOf(kind);
  append("<?xml version=\"1.0\"?>\r\n");
  const std::string id = std::to_string(static_cast<std::int32_t>(requestId));
  // An event is no request.
  appendTag("<method name=\"", method.name,
            kind == MethodKind::Event ? "\">" : "\" requestID=\"" + id + "\">");
  level_ = 1;
  const std::string_view texts[] = {text1, text2, text3};
  for (std::size_t i = 0; i < method.arguments.size() && !method.arguments[i].empty(); ++i) {
    openArgument(method.arguments[i]);
    append(texts[i]);
    append("</arg>");
  }
  if (method.element.empty()) return;
  openArgument(method.element);
  if (kind == MethodKind::CallRule) append(text2);
  if (kind == MethodKind::Event) ++level_;
}

XMLVisitor::~XMLVisitor() = default;

std::string XMLVisitor::finish() {
  --level_;
  if (!methodOf(kind_).element.empty()) {
    appendLine("</arg>");
    --level_;
  }
  appendLine("</method>");
  append(kLineEnd);
  return std::move(text_);
}

void XMLVisitor::visitListElem(const ListElem& list) {
  appendLine("<ListElem>");
  writeContainer(list, "</ListElem>", false);
}

void XMLVisitor::visitMapElem(const MapElem& map) {
  appendLine("<MapElem>");
  writeContainer(map, "</MapElem>", true);
}

void XMLVisitor::visitComposite(const NonterminalElem& composite) {
  const Element* enclosing = composite.getParent();
  startLine();
  appendTag("<CompositeElem  enclosure=\"", enclosing == nullptr ? std::string() : enclosing->getPath(),
            "\">");
  writeContainer(composite, "</CompositeElem>", true);
}

void XMLVisitor::visitIntegerElem(const IntegerElem& element) {
  appendLine("<IntegerElem>");
  append(element.stringValue());
  append("</IntegerElem>");
}

void XMLVisitor::visitBooleanElem(const BooleanElem& element) {
  appendLine("<BooleanElem>");
  append(element.stringValue());
  append("</BooleanElem>");
}

void XMLVisitor::visitDoubleElem(const DoubleElem& element) {
  appendLine("<DoubleElem>");
  append(DoubleElem::fixedText(element.value()));
  append("</DoubleElem>");
}

void XMLVisitor::visitStringElem(const StringElem& element) {
  startLine();
  if (element.encoding().empty()) {
    append("<StringElem>");
  } else {
    appendTag("<StringElem  encoding=\"", element.encoding(), "\">");
  }
  append(element.value());
  append("</StringElem>");
}

void XMLVisitor::visitBinaryElem(const BinaryElem& element) {
  appendLine("<BinaryElem>");
  append(encodeBase64({element.binaryValue(), element.binaryLength()}));
  append("</BinaryElem>");
}

void XMLVisitor::visitNullElem(const NullElem& /*element*/) { appendLine("<NullElem/>"); }

void XMLVisitor::visitMessage(const Exception& exception) {
  appendLine("<message>");
  append(exception.getMessage());
  append("</message>");
}

void XMLVisitor::writeContainer(const NonterminalElem& container, std::string_view closingTag, bool named) {
  ++level_;
  open_.push_back({container.iterator(), closingTag, named});
  // Within the loop below, which then goes on with this container: a tree's depth costs no stack.
  if (writing_) return;
  writing_ = true;
  while (!open_.empty()) writeNextChild();
  writing_ = false;
}

void XMLVisitor::writeNextChild() {
  Open& open = open_.back();
  if (open.inChild) {
    --level_;
    appendLine("</child>");
    open.inChild = false;
  }
  if (!open.children->hasNext()) {
    --level_;
    appendLine(open.closingTag);
    open_.pop_back();
    return;
  }
  if (open.named) {
    const std::string name = open.children->nextName();
    // For the use of this side only.
    if (name.starts_with("_")) {
      open.children->next();
      return;
    }
    if (name.size() > kMaxChildNameLength) {
      refuse("child name of " + std::to_string(name.size()) + " bytes, at most 119");
    }
    startLine();
    appendTag("<child name=\"", name, "\">");
    ++level_;
    open.inChild = true;
  }
  open.children->next()->accept(*this);
}

void XMLVisitor::openArgument(std::string_view name) {
  startLine();
  appendTag("<arg name=\"", name, "\">");
}

void XMLVisitor::appendTag(std::string_view before, std::string_view attribute, std::string_view after) {
  const std::size_t length = before.size() + attribute.size() + after.size();
  if (length > kMaxTagLength) {
    refuse("tag of " + std::to_string(length) + " bytes, at most 383");
  }
  append(before);
  append(attribute);
  append(after);
}

void XMLVisitor::appendLine(std::string_view tag) {
  startLine();
  append(tag);
}

void XMLVisitor::startLine() {
  const std::size_t indentation = level_ > 0 ? 2 * static_cast<std::size_t>(level_) : 0;
  checkRoom(kLineEnd.size() + indentation);
  text_.append(kLineEnd);
  text_.append(indentation, ' ');
}

void XMLVisitor::append(std::string_view text) {
  checkRoom(text.size());
  text_.append(text);
}

void XMLVisitor::checkRoom(std::size_t length) const {
  if (length > kMaxDocumentLength - text_.size()) refuse("document above 64 MiB");
}

}  // namespace qvn
