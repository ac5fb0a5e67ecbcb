// The texts in what a device has sent, which may be anything.
#pragma once

#include <string>

#include "bidi/element/map_elem.h"
#include "common/exception.h"

namespace qvn {

// The text of an element; empty for none, and for one that is no text.
inline std::string textOrEmpty(const Element* element) {
  if (element == nullptr) return {};
  try {
    return element->stringValue();
  } catch (const Win32Exception&) {
    return {};
  }
}

// The same of the entry of a map; empty also for what is no map.
inline std::string entryOf(const Element* map, const std::string& name) {
  const auto* const entries = dynamic_cast<const MapElem*>(map);
  return entries == nullptr ? std::string() : textOrEmpty(entries->find(name));
}

}  // namespace qvn
