#include "documents/method_document.h"

#include <libxml/parser.h>

#include <algorithm>
#include <array>
#include <vector>

#include "documents/documents.h"
#include "documents/refusal.h"

namespace sim {
namespace {

constexpr std::size_t kLongestRequestId = 11;  // -2147483648
constexpr int kDeepest = 32;

// An argument of a method: a text, or an element.
struct Argument {
  std::string_view name;
  std::string MethodCall::*text;
};
struct Form {
  std::string_view method;
  MethodCall::Kind kind;
  std::array<Argument, 3> arguments;
};
constexpr std::array kForms = {
    Form{"callMethod",
         MethodCall::Kind::CallMethod,
         {{{"objName", &MethodCall::object}, {"method", &MethodCall::name}, {"params", nullptr}}}},
    Form{"addObserver",
         MethodCall::Kind::AddObserver,
         {{{"objName", &MethodCall::object},
           {"event", &MethodCall::name},
           {"observer", &MethodCall::observer}}}},
    Form{"removeObserver",
         MethodCall::Kind::RemoveObserver,
         {{{"objName", &MethodCall::object},
           {"event", &MethodCall::name},
           {"observer", &MethodCall::observer}}}},
};

std::string_view viewOf(const xmlChar* text) {
  return text == nullptr ? std::string_view() : reinterpret_cast<const char*>(text);
}

std::string_view tagOf(const xmlNode* node) { return viewOf(node->name); }

// The value of an attribute, when the element has that one and no other.
std::string onlyAttribute(const xmlNode* node, std::string_view name) {
  const xmlAttr* const attribute = node->properties;
  if (attribute == nullptr || attribute->next != nullptr || viewOf(attribute->name) != name) {
    throw Refusal(std::string(tagOf(node)) + " needs one attribute, " + std::string(name));
  }
  return std::string(viewOf(attribute->children == nullptr ? nullptr : attribute->children->content));
}

std::string textOf(const xmlNode* node) {
  std::string text;
  for (const xmlNode* child = node->children; child != nullptr; child = child->next) {
    if (child->type != XML_TEXT_NODE) throw Refusal(std::string(tagOf(node)) + " holds more than a text");
    text += viewOf(child->content);
  }
  return text;
}

// The elements in an element that holds nothing else but blanks.
std::vector<const xmlNode*> elementsOf(const xmlNode* node) {
  std::vector<const xmlNode*> elements;
  for (const xmlNode* child = node->children; child != nullptr; child = child->next) {
    if (child->type == XML_ELEMENT_NODE) {
      elements.push_back(child);
    } else if (child->type != XML_TEXT_NODE || xmlIsBlankNode(child) == 0) {
      throw Refusal(std::string(tagOf(node)) + " holds more than elements");
    }
  }
  return elements;
}

Element elementOf(const xmlNode* node, int depth);

Element onlyElementOf(const xmlNode* node, int depth) {
  const auto elements = elementsOf(node);
  if (elements.size() != 1) throw Refusal(std::string(tagOf(node)) + " needs one element");
  return elementOf(elements.front(), depth);
}

Element elementOf(const xmlNode* node, int depth) {
  if (depth == kDeepest) throw Refusal("elements within elements, too many");
  const auto* const tag = std::find(std::begin(kElementTags), std::end(kElementTags), tagOf(node));
  if (tag == std::end(kElementTags)) throw Refusal("no element: " + std::string(tagOf(node)));
  Element element{static_cast<Element::Kind>(tag - kElementTags), {}, {}, {}};
  if (element.kind == Element::Kind::String && node->properties != nullptr) {
    onlyAttribute(node, "encoding");
  } else if (node->properties != nullptr) {
    throw Refusal(std::string(tagOf(node)) + " has an attribute");
  }
  switch (element.kind) {
    case Element::Kind::List:
      for (const xmlNode* child : elementsOf(node)) element.children.push_back(elementOf(child, depth + 1));
      break;
    case Element::Kind::Map:
      for (const xmlNode* child : elementsOf(node)) {
        if (tagOf(child) != "child") throw Refusal("no child of a map: " + std::string(tagOf(child)));
        Element value = onlyElementOf(child, depth + 1);
        value.name = onlyAttribute(child, "name");
        element.children.push_back(std::move(value));
      }
      break;
    default:
      element.text = textOf(node);
      if (element.kind == Element::Kind::Integer && !element.number()) {
        throw Refusal("no integer: " + element.text);
      }
      break;
  }
  return element;
}

bool isRequestId(std::string_view text) {
  if (text.empty() || text.size() > kLongestRequestId) return false;
  if (text.front() == '-') text.remove_prefix(1);
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

std::string attributeOf(const xmlNode* node, std::string_view name) {
  for (const xmlAttr* attribute = node->properties; attribute != nullptr; attribute = attribute->next) {
    if (viewOf(attribute->name) == name && attribute->children != nullptr) {
      return std::string(viewOf(attribute->children->content));
    }
  }
  return {};
}

// A document type is where entities are declared: it is not read any further.
void stopAtDocumentType(void* context, const xmlChar*, const xmlChar*, const xmlChar*) {
  xmlStopParser(static_cast<xmlParserCtxt*>(context));
}

}  // namespace

MethodDocument::MethodDocument(ByteView text) {
  if (text.size() > documents::kLongest) throw Refusal("a document that is too long");
  struct FreeContext {
    void operator()(xmlParserCtxt* context) const { xmlFreeParserCtxt(context); }
  };
  const std::unique_ptr<xmlParserCtxt, FreeContext> context(xmlNewParserCtxt());
  context->sax->internalSubset = stopAtDocumentType;
  document_.reset(xmlCtxtReadMemory(context.get(), reinterpret_cast<const char*>(text.data()),
                                    static_cast<int>(text.size()), nullptr, "UTF-8",
                                    XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
  if (!document_ || context->errNo != XML_ERR_OK) throw Refusal("no well-formed document");
  root_ = xmlDocGetRootElement(document_.get());
  if (tagOf(root_) != "method" || attributeOf(root_, "name").empty() ||
      !isRequestId(attributeOf(root_, "requestID")) || root_->properties->next->next != nullptr) {
    throw Refusal("no method with a name and an id");
  }
}

std::string MethodDocument::requestId() const { return attributeOf(root_, "requestID"); }

MethodCall MethodDocument::call() const {
  const std::string method = attributeOf(root_, "name");
  const auto* const form =
      std::find_if(kForms.begin(), kForms.end(), [&](const Form& known) { return known.method == method; });
  if (form == kForms.end()) throw Refusal("unknown method " + method);
  const auto arguments = elementsOf(root_);
  if (arguments.size() != form->arguments.size()) throw Refusal(method + " needs three arguments");
  MethodCall call{form->kind, {}, {}, {}, {}};
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const Argument& expected = form->arguments[i];
    if (tagOf(arguments[i]) != "arg" || onlyAttribute(arguments[i], "name") != expected.name) {
      throw Refusal(method + " needs the argument " + std::string(expected.name) + " there");
    }
    if (expected.text == nullptr) {
      call.params = onlyElementOf(arguments[i], 0);
    } else {
      call.*expected.text = textOf(arguments[i]);
      if (call.*expected.text == "") throw Refusal("nothing in the argument " + std::string(expected.name));
    }
  }
  return call;
}

}  // namespace sim
