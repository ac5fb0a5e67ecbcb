#include "common/logging/log_component.h"

#include <algorithm>
#include <utility>

namespace qvn {

Component::Component(std::string name, std::uint32_t defaultMask)
    : name_(std::move(name)), mask_(defaultMask) {}

Component::~Component() = default;

const std::string& Component::getName() const { return name_; }
void Component::setMask(std::uint32_t mask) { mask_ = mask; }
std::uint32_t Component::getMask() const { return mask_; }

namespace log_component {
namespace {

constexpr std::uint32_t kEverything = 0xFFFFFFFF;

// Never destroyed: a client's threads may still log while the process ends.
std::array<Component, kCount>& table() {
  static auto* const components = new std::array<Component, kCount>{{
      {"Bidi", kEverything},
      {"ComClientBidi", kEverything},
      {"ComClient", 0},
      {"COMServer", 0},
      {"CfgUtil", 0},
      {"Hbn1Transport", 0},
      {"Hbn3Transport", 0},
      {"Ip1Transport", 0},
      {"Ip1TransportDiscovery", 0},
      {"LegacyClient", kEverything},
      {"PortMonitorUI", kEverything},
      {"PPClient", 0},
      {"PPServer", 0},
      {"PrintMonitor", kEverything},
      {"Server", 0},
      {"ServerHid", 0},
      {"Special", 0},
      {"Transport", 0},
      {"Usb1Transport", 0},
      {"Usb1TransportDiscovery", 0},
      {"Usb1TransportHid", 0},
      {"Par1Transport", 0},
      {"Shared", 0},
      {"Utility", 0},
      {"InstallHelper", 0},
  }};
  return *components;
}

}  // namespace

Component& all() {
  static auto* const component = new Component("All", kEverything);
  return *component;
}

Component& at(std::size_t index) { return table()[index]; }

const Component* find(std::string_view name) {
  const auto& components = table();
  const auto found = std::find_if(components.begin(), components.end(),
                                  [&](const Component& component) { return component.getName() == name; });
  return found == components.end() ? nullptr : &*found;
}

}  // namespace log_component
}  // namespace qvn
