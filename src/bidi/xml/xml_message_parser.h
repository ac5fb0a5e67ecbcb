// XMLMessageParser: reads a message document (method, response or exception) into a map of elements.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "bidi/element/map_elem.h"

namespace qvn {

// The map holds "messageType" ("method", "response" or "exception"), "requestID", and
//   of a method:   "systemRule" (the method's name) and each argument under its name;
//   of a response: "result", when there is one.
// A document need not be complete: what counts is the last message closed in it.
class XMLMessageParser {
 public:
  // 0, or -1 for what is not XML, declares entities or attributes, or holds text that is not UTF-8. A number
  // that cannot be read is a Win32Exception. Each call forgets what was read before.
  int parse(const void* bytes, std::uint32_t length);

  // The message read last, null when there was none; the parser's until taken.
  const MapElem* message() const { return message_.get(); }
  std::unique_ptr<MapElem> takeMessage() { return std::move(message_); }

 private:
  std::unique_ptr<MapElem> message_;
};

}  // namespace qvn
