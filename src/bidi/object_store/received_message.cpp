#include "bidi/object_store/received_message.h"

#include <cstdlib>

#include "bidi/element/element_text.h"
#include "bidi/element/map_elem.h"
#include "bidi/xml/xml_message_parser.h"
#include "common/exception.h"

namespace qvn {
namespace {

constexpr std::size_t kMaxClassifiedLength = 10000;
constexpr std::string_view kDeclarationStart = "<?";

// Null for what is no message.
std::unique_ptr<MapElem> readMessage(std::string_view document) {
  if (document.size() > 0xFFFFFFFF) return nullptr;
  XMLMessageParser parser;
  try {
    if (parser.parse(document.data(), static_cast<std::uint32_t>(document.size())) != 0) return nullptr;
  } catch (const Win32Exception&) {
    return nullptr;
  }
  return parser.takeMessage();
}

// Null also for what is not to be classified.
std::unique_ptr<MapElem> readClassifiable(std::string_view document) {
  if (document.size() > kMaxClassifiedLength || !document.starts_with(kDeclarationStart)) return nullptr;
  return readMessage(document);
}

MessageType typeOf(const MapElem& message) {
  const std::string type = entryOf(&message, "messageType");
  if (type == "response") return MessageType::Response;
  if (type == "exception") return MessageType::Exception;
  return MessageType::Method;
}

// As the C library reads a decimal number, modulo 2^32: documents are sent with the id as a signed one.
std::uint32_t requestIdOf(const MapElem& message) {
  return static_cast<std::uint32_t>(std::strtoull(entryOf(&message, "requestID").c_str(), nullptr, 10));
}

}  // namespace

ReceivedMessage classifyMessage(std::string_view document) {
  const std::unique_ptr<MapElem> message = readClassifiable(document);
  if (message == nullptr) return {};
  ReceivedMessage received;
  received.type = typeOf(*message);
  if (received.type == MessageType::Method) return received;
  received.requestId = requestIdOf(*message);
  if (received.type == MessageType::Response) received.result = entryOf(message.get(), "result");
  return received;
}

std::int32_t responseResult(std::string_view document) {
  const std::unique_ptr<MapElem> message = readMessage(document);
  if (message == nullptr) return kUnreadableResult;
  switch (typeOf(*message)) {
    case MessageType::Exception:
      return kExceptionResult;
    case MessageType::Response:
      break;
    default:
      return kUnreadableResult;
  }
  const Element* result = message->find("result");
  if (result == nullptr) return kNoResult;
  try {
    return result->intValue();
  } catch (const Win32Exception&) {
    return kUnreadableResult;
  }
}

std::optional<StoreNotification> readNotification(std::string_view document) {
  const std::unique_ptr<MapElem> message = readClassifiable(document);
  if (message == nullptr || typeOf(*message) != MessageType::Method) return std::nullopt;
  StoreNotification notification{entryOf(message.get(), "observer"), entryOf(message.get(), "objName"),
                                 entryOf(message.get(), "event"), nullptr};
  if (message->find("data") != nullptr) notification.data = message->removeChild("data");
  return notification;
}

}  // namespace qvn
