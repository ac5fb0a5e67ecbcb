#include <initializer_list>
#include <string_view>

#include "discovery/device_answer.h"
#include "discovery/services.h"
#include "net/endpoint.h"
#include "shared/base/families.h"
#include "shared/base/plain_text.h"

namespace qvn::ipv4 {
namespace {

std::string_view txtEntry(const Service& service, const char* key) {
  const auto found = service.texts.find(key);
  return found == service.texts.end() ? std::string_view() : found->second;
}

// "product" comes in parentheses, as PostScript has it.
std::string_view withoutParentheses(std::string_view text) {
  const bool enclosed = text.size() >= 2 && text.front() == '(' && text.back() == ')';
  return enclosed ? text.substr(1, text.size() - 2) : text;
}

// Empty when none may be used.
std::string firstPlain(std::initializer_list<std::string_view> texts) {
  for (const std::string_view text : texts) {
    if (shared::isPlainText(text)) return std::string(text);
  }
  return {};
}

}  // namespace

std::optional<DeviceAnswer> describeService(const Service& service) {
  DeviceAnswer device;
  device.family = shared::kBpdPrinterFamily;
  device.serial = firstPlain({txtEntry(service, "usb_ser"), txtEntry(service, "uuid"), service.name});
  device.model = firstPlain({txtEntry(service, "ty"), withoutParentheses(txtEntry(service, "product")),
                             service.name, device.serial});
  device.name = firstPlain({service.name, device.model});
  device.printPort = service.place.port;
  if (device.serial.empty() || service.place.address == 0 || device.printPort == 0) return std::nullopt;
  return device;
}

}  // namespace qvn::ipv4
