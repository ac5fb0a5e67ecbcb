#include "shared/object-store/element_json.h"

#include <algorithm>
#include <limits>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string_view>

#include "bidi/element/base64.h"
#include "bidi/element/binary_elem.h"
#include "bidi/element/boolean_elem.h"
#include "bidi/element/double_elem.h"
#include "bidi/element/element_visitor.h"
#include "bidi/element/integer_elem.h"
#include "bidi/element/list_elem.h"
#include "bidi/element/map_elem.h"
#include "bidi/element/null_elem.h"
#include "bidi/element/string_elem.h"
#include "bidi/xml/xml_visitor.h"

namespace qvn::object_store {
namespace {

constexpr int kDeepest = 100;
constexpr char kBase64[] = "base64";

std::unique_ptr<Element> numberElement(const Json& value) {
  constexpr std::int64_t kLowest = std::numeric_limits<std::int32_t>::min();
  constexpr std::int64_t kHighest = std::numeric_limits<std::int32_t>::max();
  const bool fits = !value.is_number_unsigned() || value.get<std::uint64_t>() <= kHighest;
  if (!fits || value.get<std::int64_t>() < kLowest || value.get<std::int64_t>() > kHighest) {
    throw std::invalid_argument(value.dump() + " is no number of 32 bits");
  }
  return std::make_unique<IntegerElem>(value.get<std::int32_t>());
}

std::unique_ptr<Element> binaryElement(const std::string& text) {
  const auto bytes = decodeBase64(text, text.size());
  if (encodeBase64(bytes) != text) throw std::invalid_argument("'" + text + "' is no base64");
  return std::make_unique<BinaryElem>(bytes);
}

// As people can read it, whatever is in it.
std::string shown(const std::string& text) {
  return Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
}

// The name stands in quotes.
const std::string& requireName(const std::string& name) {
  if (name.size() > kMaxChildNameLength) throw std::invalid_argument(shown(name) + " is too long a name");
  if (name.starts_with('_')) {
    throw std::invalid_argument("the member " + shown(name) + " is not sent: names begin with no _");
  }
  if (name.find_first_of("\"\t\n") != std::string::npos) {
    throw std::invalid_argument("the name " + shown(name) +
                                " has a quote or a line break, which no name can hold");
  }
  return requirePlain(name);
}

std::unique_ptr<Element> mapElement(const Json& value) {
  if (value.size() == 1 && value.begin().key() == kBase64 && value.begin()->is_string()) {
    return binaryElement(value.begin()->get<std::string>());
  }
  auto map = std::make_unique<MapElem>();
  for (const auto& [name, child] : value.items()) {
    map->addChild(requireName(name), toElement(child));
  }
  return map;
}

std::unique_ptr<Element> listElement(const Json& value) {
  auto list = std::make_unique<ListElem>();
  for (const Json& child : value) list->addChild(list->getNumChildren(), toElement(child));
  return list;
}

// Each element as JSON. Documents are short, so how deep a tree can be is known.
class JsonWriter : public ElementVisitor {
 public:
  Json take() { return std::move(json_); }

  void visitMapElem(const MapElem& map) override {
    Json object = Json::object();
    for (const auto children = map.iterator(); children->hasNext();) {
      const std::string name = children->nextName();
      object[name] = toJson(*children->next());
    }
    json_ = std::move(object);
  }
  void visitListElem(const ListElem& list) override {
    Json array = Json::array();
    for (const auto children = list.iterator(); children->hasNext();)
      array.push_back(toJson(*children->next()));
    json_ = std::move(array);
  }
  void visitIntegerElem(const IntegerElem& element) override { json_ = element.intValue(); }
  void visitBooleanElem(const BooleanElem& element) override { json_ = element.booleanValue(); }
  void visitDoubleElem(const DoubleElem& element) override { json_ = element.value(); }
  void visitStringElem(const StringElem& element) override { json_ = element.stringValue(); }
  void visitBinaryElem(const BinaryElem& element) override {
    json_ = Json{{kBase64, encodeBase64({element.binaryValue(), element.binaryLength()})}};
  }

  void visitNullElem(const NullElem& /*element*/) override {}
  // Neither is ever read.
  void visitComposite(const NonterminalElem& /*composite*/) override {}
  void visitMessage(const Exception& /*exception*/) override {}

 private:
  Json json_;
};

}  // namespace

const std::string& requirePlain(const std::string& text) {
  const auto isControl = [](unsigned char c) { return c < ' ' && c != '\t' && c != '\n'; };
  if (hasMarkup(text)) throw std::invalid_argument(shown(text) + " has markup, which a document cannot hold");
  // The last two are U+FFFE and U+FFFF.
  if (std::any_of(text.begin(), text.end(), isControl) || text.find("\xEF\xBF\xBE") != std::string::npos ||
      text.find("\xEF\xBF\xBF") != std::string::npos) {
    throw std::invalid_argument(shown(text) + " has control characters, which a document cannot hold");
  }
  try {
    static_cast<void>(Json(text).dump());
  } catch (const Json::type_error&) {
    throw std::invalid_argument(shown(text) + " is not UTF-8");
  }
  return text;
}

std::unique_ptr<Element> parseElement(const std::string& text) {
  const auto isTooDeep = [](int depth, Json::parse_event_t, const Json&) {
    if (depth > kDeepest) throw std::invalid_argument("the JSON is nested too deep");
    return true;
  };
  try {
    return toElement(Json::parse(text, isTooDeep));
  } catch (const Json::parse_error& error) {
    throw std::invalid_argument(std::string("no JSON: ") + error.what());
  }
}

std::unique_ptr<Element> toElement(const Json& value) {
  switch (value.type()) {
    case Json::value_t::object:
      return mapElement(value);
    case Json::value_t::array:
      return listElement(value);
    case Json::value_t::string:
      return std::make_unique<StringElem>(requirePlain(value.get_ref<const std::string&>()));
    case Json::value_t::boolean:
      return std::make_unique<BooleanElem>(value.get<bool>());
    case Json::value_t::number_integer:
    case Json::value_t::number_unsigned:
      return numberElement(value);
    case Json::value_t::number_float:
      return std::make_unique<DoubleElem>(value.get<double>());
    default:
      return std::make_unique<NullElem>();
  }
}

Json toJson(const Element& element) {
  JsonWriter writer;
  element.accept(writer);
  return writer.take();
}

}  // namespace qvn::object_store
