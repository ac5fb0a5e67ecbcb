// What a document from a device's object store says. Nothing here throws for what a device sends.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "bidi/element/element.h"

namespace qvn {

enum class MessageType : std::uint32_t { Unreadable, Response, Method, Exception, ScanData };

struct ReceivedMessage {
  MessageType type = MessageType::Unreadable;
  std::uint32_t requestId = 0;  // of a response and an exception
  std::string result;           // of a response, as text; empty when it has none
};

// Never gives ScanData. A document above 10000 bytes or without an XML declaration in front is not read at
// all.
ReceivedMessage classifyMessage(std::string_view document);

inline constexpr std::int32_t kExceptionResult = -500000;
inline constexpr std::int32_t kNoResult = -500001;
inline constexpr std::int32_t kUnreadableResult = -500002;

// The number a response brings, or one of the above: for an exception, for a response without a result, and
// for anything else, a result that is no number among it.
std::int32_t responseResult(std::string_view document);

// Something happened to an object that an observer watches. A text that is missing is empty.
struct StoreNotification {
  std::string observer;
  std::string objName;
  std::string event;
  std::unique_ptr<Element> data;  // null when there is none
};

// Empty for every document that classifyMessage does not tell to be a Method.
std::optional<StoreNotification> readNotification(std::string_view document);

}  // namespace qvn
