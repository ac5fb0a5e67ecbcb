#include "bidi/xml/xml_message_parser.h"

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "bidi/element/base64.h"
#include "bidi/element/binary_elem.h"
#include "bidi/element/boolean_elem.h"
#include "bidi/element/double_elem.h"
#include "bidi/element/integer_elem.h"
#include "bidi/element/list_elem.h"
#include "bidi/element/null_elem.h"
#include "bidi/element/string_elem.h"
#include "bidi/element/string_to_i.h"
#include "bidi/xml/expat_reader.h"
#include "platform/base/number.h"

namespace qvn {
namespace {

enum class Tag {
  List,
  Map,
  Integer,
  String,
  Boolean,
  Double,
  Null,
  Composite,
  Method,
  Response,
  Exception,
  Arg,
  Child,
  Binary,
  Unknown
};

// A tag is known by the first two characters of its name.
constexpr std::pair<std::string_view, Tag> kTags[] = {
    {"Li", Tag::List},    {"Ma", Tag::Map},      {"In", Tag::Integer},   {"St", Tag::String},
    {"Bo", Tag::Boolean}, {"Do", Tag::Double},   {"Nu", Tag::Null},      {"Co", Tag::Composite},
    {"me", Tag::Method},  {"re", Tag::Response}, {"ex", Tag::Exception}, {"ar", Tag::Arg},
    {"ch", Tag::Child},   {"Bi", Tag::Binary},
};

Tag tagOf(std::string_view name) {
  for (const auto& known : kTags) {
    if (name.starts_with(known.first)) return known.second;
  }
  return Tag::Unknown;
}

// Reads one document. The frames of the tags that are open stand on a stack, each with what it holds so far.
class MessageReader : private ExpatReader {
 public:
  // False when the document cannot be read; `message` stays null when there is none in it.
  bool readMessage(std::string_view document, std::unique_ptr<MapElem>& message) {
    if (!read(document, Extent::Beginning)) return false;
    message = std::move(message_);
    return true;
  }

 private:
  struct Frame {
    Tag tag;
    std::string name;  // the attributes
    std::string requestId;
    std::string text;
    std::unique_ptr<Element> element;  // the container, or what an arg or a child holds
  };

  void startTag(const char* name, const char** attributes) override {
    Frame& frame = frames_.emplace_back();
    frame.tag = tagOf(name);
    for (; *attributes != nullptr; attributes += 2) {
      const std::string_view attribute = attributes[0];
      if (attribute == "name") frame.name = attributes[1];
      if (attribute == "requestID") frame.requestId = attributes[1];
    }
    switch (frame.tag) {
      case Tag::Method:
      case Tag::Response:
      case Tag::Exception:
      case Tag::Map:
        frame.element = std::make_unique<MapElem>();
        break;
      case Tag::List:
        frame.element = std::make_unique<ListElem>();
        break;
      case Tag::Unknown:
        std::fputs("UNKNOWN TYPE\r\n", stdout);
        break;
      default:
        break;
    }
  }

  void addText(std::string_view text) override { frames_.back().text.append(text); }

  void endTag() override {
    Frame closed = std::move(frames_.back());
    frames_.pop_back();
    std::unique_ptr<Element> element = elementOf(closed);
    if (element != nullptr && !frames_.empty()) give(frames_.back(), closed.name, std::move(element));
  }

  // What a closed tag yields to the one around it.
  std::unique_ptr<Element> elementOf(Frame& closed) {
    switch (closed.tag) {
      case Tag::Integer:
        return std::make_unique<IntegerElem>(StringToi(closed.text));
      case Tag::String:
        return std::make_unique<StringElem>(std::move(closed.text));
      case Tag::Boolean:
        return std::make_unique<BooleanElem>(closed.text);
      case Tag::Double:
        return std::make_unique<DoubleElem>(platform::toDouble(closed.text.c_str()));
      case Tag::Null:
        return std::make_unique<NullElem>();
      case Tag::Binary:
        return std::make_unique<BinaryElem>(decodeBase64(closed.text, closed.text.size()));
      case Tag::Arg:
        if (closed.element == nullptr) return std::make_unique<StringElem>(std::move(closed.text));
        return std::move(closed.element);
      case Tag::Child:
      case Tag::List:
      case Tag::Map:
        return std::move(closed.element);
      case Tag::Method:
        closed.element->addChild("systemRule", std::make_unique<StringElem>(std::move(closed.name)));
        takeMessage(closed, "method");
        break;
      case Tag::Response:
        takeMessage(closed, "response");
        break;
      case Tag::Exception:
        takeMessage(closed, "exception");
        break;
      case Tag::Composite:
      case Tag::Unknown:
        break;
    }
    return nullptr;
  }

  // Messages within a message replace each other: the outermost closes last.
  void takeMessage(Frame& closed, const char* type) {
    closed.element->addChild("messageType", std::make_unique<StringElem>(type));
    closed.element->addChild("requestID", std::make_unique<StringElem>(std::move(closed.requestId)));
    message_.reset(static_cast<MapElem*>(closed.element.release()));
  }

  static void give(Frame& to, const std::string& name, std::unique_ptr<Element> element) {
    switch (to.tag) {
      case Tag::Method:
      case Tag::Map:
        to.element->addChild(name, std::move(element));
        break;
      case Tag::Response:
      case Tag::Exception:
        to.element->addChild("result", std::move(element));
        break;
      case Tag::Arg:
      case Tag::Child:
        to.element = std::move(element);
        break;
      case Tag::List:
        to.element->addChild(to.element->getNumChildren(), std::move(element));
        break;
      default:
        break;
    }
  }

  std::vector<Frame> frames_;
  std::unique_ptr<MapElem> message_;
};

}  // namespace

int XMLMessageParser::parse(const void* bytes, std::uint32_t length) {
  message_.reset();
  return MessageReader().readMessage({static_cast<const char*>(bytes), length}, message_) ? 0 : -1;
}

}  // namespace qvn
