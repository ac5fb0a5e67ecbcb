// The XML documents that a BpdPrinter's scanner takes and sends, by the names that faults call them.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace sim::documents {

// The longest that anybody has to read.
inline constexpr std::size_t kLongest = 10000;

struct Entry {
  std::string_view name;  // the method's, or the event's
  bool isNotification = false;
};

inline constexpr std::array kDocuments = {
    Entry{"addObserver"},
    Entry{"removeObserver"},
    Entry{"enterHostUSBSendMode"},
    Entry{"exitHostUSBSendMode"},
    Entry{"create"},
    Entry{"start"},
    Entry{"cancel"},
    Entry{"done"},
    Entry{"systemUpdate", true},
    Entry{"stateChanged", true},
    Entry{"pageScanned", true},
};

// Any other document; it meets only the faults of any.
inline constexpr Entry kUnknown = {{}};

constexpr std::string_view nameOf(const Entry& entry) { return entry.name; }

// Null when there is no such document.
constexpr const Entry* entryNamed(std::string_view name) {
  for (const Entry& entry : kDocuments) {
    if (entry.name == name) return &entry;
  }
  return nullptr;
}

}  // namespace sim::documents
