// What a discovery tells, and how to read it.
#pragma once

#include <cstdint>
#include <regex>
#include <string>
#include <vector>

#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "qvn/transport/observer.h"

namespace qvn::test {

inline std::string stringOf(const std::string& text, const char* descriptor) {
  std::string value;
  AttributeCodec::getString(text, descriptor, value);
  return value;
}

inline std::uint32_t longOf(const std::string& text, const char* descriptor) {
  std::uint32_t value = 0;
  AttributeCodec::getLong(text, descriptor, value);
  return value;
}

class DiscoveryLog : public Observer {
 public:
  // Without the moment at which each was told.
  std::vector<std::string> texts;
  // Of the scanners and HIDs that belong to them.
  std::vector<std::string> parts;

 protected:
  using Observer::doUpdate;
  void doUpdate(const std::string& text) override {
    const std::string family = stringOf(text, attribute::kDevice);
    static const std::regex tickCount("<TickCount>[0-9]+</TickCount>");
    (family == "CpdScanner" || family == "BpdScanner" || family == "CpdHid" ? parts : texts)
        .push_back(std::regex_replace(text, tickCount, ""));
  }
};

}  // namespace qvn::test
