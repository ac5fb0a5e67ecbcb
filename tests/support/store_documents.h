// The documents of a Bpd device's objects, as a device writes them, and what a test wants to know of those
// that it gets. Shares no code with the library.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qvn::test {

inline std::string declared(const std::string& root) { return "<?xml version=\"1.0\"?>\r\n" + root; }

inline std::string response(std::uint32_t id, const std::string& value) {
  return declared("<response requestID=\"" + std::to_string(id) + "\">" + value + "</response>");
}
inline std::string number(int value) { return "<IntegerElem>" + std::to_string(value) + "</IntegerElem>"; }
inline std::string text(const std::string& value) { return "<StringElem>" + value + "</StringElem>"; }
inline std::string exception(std::uint32_t id) {
  return declared("<exception requestID=\"" + std::to_string(id) + "\"><message>no</message></exception>");
}
inline std::string notification(const std::string& observer, const std::string& object,
                                const std::string& event, const std::string& data) {
  return declared("<method name=\"event\"><arg name=\"observer\">" + observer +
                  "</arg><arg name=\"objName\">" + object + "</arg><arg name=\"event\">" + event +
                  "</arg><arg name=\"data\">" + data + "</arg></method>");
}
inline std::string systemUpdate(const std::string& value) {
  return notification("Observer_System", "system", "systemUpdate", text(value));
}
inline std::string entries(const std::string& jobType, const std::string& key, const std::string& value) {
  return "<MapElem><child name=\"job type\">" + text(jobType) + "</child><child name=\"" + key + "\">" +
         text(value) + "</child></MapElem>";
}

// What stands between the two.
inline std::string between(std::string_view document, std::string_view open, std::string_view close) {
  const std::size_t begin = document.find(open);
  if (begin == std::string_view::npos) return {};
  const std::size_t from = begin + open.size();
  return std::string(document.substr(from, document.find(close, from) - from));
}
inline std::uint32_t requestId(std::string_view document) {
  return static_cast<std::uint32_t>(std::stoul(between(document, "requestID=\"", "\"")));
}
inline std::string argument(std::string_view document, const std::string& name) {
  return between(document, "<arg name=\"" + name + "\">", "</arg>");
}
// "callMethod system enterHostUSBSendMode", "addObserver system systemUpdate Observer_System".
inline std::string summary(std::string_view document) {
  std::string line = between(document, "<method name=\"", "\"") + " " + argument(document, "objName") + " ";
  const std::string event = argument(document, "event");
  return event.empty() ? line + argument(document, "method")
                       : line + event + " " + argument(document, "observer");
}

}  // namespace qvn::test
