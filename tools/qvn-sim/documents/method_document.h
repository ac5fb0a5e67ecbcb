// Reads the method documents that hosts send. It is strict: what no host should send, the device refuses.
#pragma once

#include <libxml/tree.h>

#include <memory>
#include <string>
#include <string_view>

#include "base/bytes.h"
#include "documents/element.h"

namespace sim {

// A method of an object that a host calls, or an observer of an object's event that comes or goes.
struct MethodCall {
  enum class Kind : std::uint8_t { CallMethod, AddObserver, RemoveObserver };

  Kind kind;
  std::string object;
  std::string name;      // the method's or the event's
  std::string observer;  // of addObserver and removeObserver
  Element params;        // of callMethod
};

class MethodDocument {
 public:
  // Throws Refusal when it is no XML, or no method with a name and an id.
  explicit MethodDocument(ByteView text);

  // As it stands in the document.
  std::string requestId() const;
  // Throws Refusal when it is no method that hosts should call, or its arguments are not as they should be.
  MethodCall call() const;

 private:
  struct Free {
    void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
  };

  std::unique_ptr<xmlDoc, Free> document_;
  const xmlNode* root_;
};

}  // namespace sim
