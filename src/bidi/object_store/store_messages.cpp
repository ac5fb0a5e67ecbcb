#include "bidi/object_store/store_messages.h"

#include "bidi/element/list_elem.h"
#include "bidi/object_store/request_id.h"
#include "bidi/xml/xml_visitor.h"

namespace qvn {
namespace {

StoreMessage observerMessage(MethodKind kind, const std::string& objName, const std::string& event,
                             const std::string& observer) {
  const std::uint32_t requestId = nextRequestId();
  return {XMLVisitor(kind, requestId, objName, event, observer).finish(), requestId};
}

}  // namespace

StoreMessage callMethod(const std::string& objName, const std::string& method, const Element* params) {
  const std::uint32_t requestId = nextRequestId();
  XMLVisitor document(MethodKind::CallMethod, requestId, objName, method);
  const ListElem none;
  (params != nullptr ? *params : none).accept(document);
  return {document.finish(), requestId};
}

StoreMessage addObserver(const std::string& objName, const std::string& event, const std::string& observer) {
  return observerMessage(MethodKind::AddObserver, objName, event, observer);
}

StoreMessage removeObserver(const std::string& objName, const std::string& event,
                            const std::string& observer) {
  return observerMessage(MethodKind::RemoveObserver, objName, event, observer);
}

}  // namespace qvn
