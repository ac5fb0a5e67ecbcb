// The documents that the library sends to a device's object store.
#pragma once

#include <cstdint>
#include <string>

#include "bidi/element/element.h"

namespace qvn {

struct StoreMessage {
  std::string document;
  std::uint32_t requestId;
};

// Each takes the next request id. Texts are written as they stand (hasMarkup); a name that is too long is a
// Win32Exception of code 87.

// `params` stays the caller's; null sends an empty list.
StoreMessage callMethod(const std::string& objName, const std::string& method, const Element* params);
StoreMessage addObserver(const std::string& objName, const std::string& event, const std::string& observer);
StoreMessage removeObserver(const std::string& objName, const std::string& event,
                            const std::string& observer);

}  // namespace qvn
