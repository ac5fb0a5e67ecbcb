// Documents of any kind: reading them, telling what they are, and reading back what is written of them.
#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "bidi/element/map_elem.h"
#include "bidi/object_store/received_message.h"
#include "bidi/xml/xml_message_parser.h"
#include "bidi/xml/xml_visitor.h"
#include "common/exception.h"
#include "fuzz/check.h"

namespace {

using namespace qvn;

// Null for what is no message.
std::unique_ptr<MapElem> read(std::string_view document) {
  XMLMessageParser parser;
  try {
    if (parser.parse(document.data(), static_cast<std::uint32_t>(document.size())) != 0) return nullptr;
  } catch (const Win32Exception&) {
    return nullptr;
  }
  return parser.takeMessage();
}

// Empty for what cannot be written.
std::string write(const Element& element) {
  try {
    XMLVisitor visitor(MethodKind::CallMethod, 1, "object", "method");
    element.accept(visitor);
    return visitor.finish();
  } catch (const Win32Exception&) {
    return {};
  }
}

// The three readers agree on what the document is.
void compareReaders(std::string_view document, const MapElem* message) {
  const ReceivedMessage received = classifyMessage(document);
  const std::int32_t result = responseResult(document);
  const auto notification = readNotification(document);
  const bool isClassified = document.starts_with("<?") && document.size() <= 10000;
  if (message == nullptr) {
    QVN_FUZZ_CHECK(received.type == MessageType::Unreadable && result == kUnreadableResult);
    QVN_FUZZ_CHECK(!notification);
    return;
  }
  QVN_FUZZ_CHECK((received.type != MessageType::Unreadable) == isClassified);
  if (received.type == MessageType::Exception) QVN_FUZZ_CHECK(result == kExceptionResult);
  if (received.type == MessageType::Response && message->find("result") == nullptr) {
    QVN_FUZZ_CHECK(result == kNoResult);
  }
  QVN_FUZZ_CHECK(notification.has_value() == (received.type == MessageType::Method));
  if (notification) QVN_FUZZ_CHECK((notification->data != nullptr) == (message->find("data") != nullptr));
}

// Texts are written as they stand: some would be read as markup or as another line break.
bool isReadBack(const Element& root) {
  std::vector<const Element*> unseen = {&root};
  while (!unseen.empty()) {
    const Element& element = *unseen.back();
    unseen.pop_back();
    const std::string& name = element.getName();
    if (hasMarkup(name) || name.find('"') != std::string::npos) return false;
    if (std::any_of(name.begin(), name.end(), [](unsigned char c) { return c < ' '; })) return false;
    if (element.isInstanceOf("StringElem")) {
      const std::string text = element.stringValue();
      if (hasMarkup(text) || text.find('\r') != std::string::npos) return false;
    }
    if (!element.isInstanceOf("NonterminalElem")) continue;
    for (const auto children = element.iterator(); children->hasNext();) unseen.push_back(children->next());
  }
  return true;
}

// A copy is written as its original is, and what is written is read as what it was.
void writeAndReadBack(const Element& element) {
  const std::string document = write(element);
  QVN_FUZZ_CHECK(write(*element.clone()) == document);
  QVN_FUZZ_CHECK(write(*element.duplicate()) == document);
  if (document.empty() || !isReadBack(element)) return;
  const std::unique_ptr<MapElem> message = read(document);
  QVN_FUZZ_CHECK(message != nullptr && message->find("params") != nullptr);
  QVN_FUZZ_CHECK(write(*message->find("params")) == document);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view document(reinterpret_cast<const char*>(bytes), size);
  const std::unique_ptr<MapElem> message = read(document);
  compareReaders(document, message.get());
  if (message != nullptr) writeAndReadBack(*message);
  return 0;
}
