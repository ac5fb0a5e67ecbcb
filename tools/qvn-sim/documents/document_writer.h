// Writes the documents that the scanner of a BpdPrinter sends.
#pragma once

#include <string>

#include "documents/element.h"

namespace sim {

// What an observer is told.
struct Notification {
  std::string observer;
  std::string object;
  std::string event;
  Element data;
};

std::string responseDocument(const std::string& requestId, const Element& result);
std::string exceptionDocument(const std::string& requestId, const std::string& message);
std::string notificationDocument(const Notification& notification);

}  // namespace sim
