#include "bidi/object_store/object_store_command.h"

#include "bidi/object_store/received_message.h"

namespace qvn {

bool ObjectStoreCommand::matches(std::string_view document) const {
  bool isException = false;
  return matches(document, isException);
}

bool ObjectStoreCommand::matches(std::string_view document, bool& isException) const {
  const ReceivedMessage message = classifyMessage(document);
  isException = message.type == MessageType::Exception;
  return message.requestId == requestId_ && (message.type == MessageType::Response || isException);
}

}  // namespace qvn
