#include "documents/scan_parameters.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "documents/refusal.h"

namespace sim {
namespace {

constexpr std::int32_t kDefaultDpi = 300;
constexpr std::int32_t kDefaultBitDepth = 8;

constexpr std::array<std::string_view, 5> kWithoutEffect = {"orientation", "contentType", "darkness",
                                                            "contrast", "originalMediaSize"};

struct BitDepth {
  std::int32_t bits;
  ColorFormat format;
};
constexpr std::array kBitDepths = {
    BitDepth{1, ColorFormat::BlackAndWhite},
    BitDepth{8, ColorFormat::Gray},
    BitDepth{24, ColorFormat::Color},
};

// The entries of a map, taken out one by one; what is left in the end was not to be there.
class Entries {
 public:
  Entries(std::string_view name, const Element& map) : name_(name), map_(map) {
    if (map.kind != Element::Kind::Map) throw Refusal(name_ + " is no map");
  }

  // Null when it is absent.
  const Element* take(std::string_view name) {
    const auto found = std::find_if(map_.children.begin(), map_.children.end(),
                                    [name](const Element& child) { return child.name == name; });
    if (found == map_.children.end()) return nullptr;
    ++taken_;
    return &*found;
  }

  Entries takeMap(std::string_view name) {
    const Element* const map = take(name);
    if (map == nullptr) throw Refusal("no " + std::string(name) + " in " + name_);
    return Entries(name, *map);
  }

  std::int32_t takeInteger(std::string_view name, std::int32_t absent) {
    const Element* const value = take(name);
    if (value == nullptr) return absent;
    if (value->kind != Element::Kind::Integer) throw Refusal(std::string(name) + " is no integer");
    return value->number().value_or(absent);
  }

  void expectNoMore() const {
    if (taken_ != map_.children.size()) throw Refusal("entries that are unknown or come twice in " + name_);
  }

 private:
  const std::string name_;
  const Element& map_;
  std::size_t taken_ = 0;
};

struct Point {
  std::int32_t x;
  std::int32_t y;
};

Point takePoint(Entries& window, std::string_view name, Point absent) {
  Entries point = window.takeMap(name);
  const Point result{point.takeInteger("x", absent.x), point.takeInteger("y", absent.y)};
  point.expectNoMore();
  return result;
}

void setWindow(ScanSettings& settings, Entries window) {
  const Point from = takePoint(window, "topLeft", {0, 0});
  const Point to = takePoint(window, "bottomRight", {kGlassWidth, kGlassHeight});
  window.expectNoMore();
  if (from.x < 0 || from.y < 0 || to.x <= from.x || to.y <= from.y) throw Refusal("an empty window");
  settings.left = static_cast<std::uint32_t>(from.x);
  settings.top = static_cast<std::uint32_t>(from.y);
  settings.width = static_cast<std::uint32_t>(to.x - from.x);
  settings.height = static_cast<std::uint32_t>(to.y - from.y);
  if (!settings.isPossible()) throw Refusal("a window without a dot, or beyond the glass");
}

ScanSettings readSettings(Entries parameters) {
  ScanSettings settings;
  for (const std::string_view name : kWithoutEffect) parameters.takeInteger(name, 0);

  const std::int32_t dpi = parameters.takeInteger("resolution", kDefaultDpi);
  if (std::find(kResolutions.begin(), kResolutions.end(), dpi) == kResolutions.end()) {
    throw Refusal("no such resolution");
  }
  settings.dpi = static_cast<std::uint32_t>(dpi);

  const std::int32_t bits = parameters.takeInteger("bitdepth", kDefaultBitDepth);
  const auto* const depth = std::find_if(kBitDepths.begin(), kBitDepths.end(),
                                         [bits](const BitDepth& known) { return known.bits == bits; });
  if (depth == kBitDepths.end()) throw Refusal("no such bit depth");
  settings.format = depth->format;

  const std::int32_t source = parameters.takeInteger("source", 0);
  if (source != 0 && source != 1) throw Refusal("no such source");
  settings.origin = source == 0 ? PageOrigin::Flatbed : PageOrigin::Feeder;

  setWindow(settings, parameters.takeMap("scanWindow"));
  parameters.expectNoMore();
  return settings;
}

}  // namespace

ScanSettings readScanParameters(const Element& tree) {
  Entries parameters("params", tree);
  const ScanSettings settings = readSettings(parameters.takeMap("scanParameters"));
  Entries document = parameters.takeMap("documentParameters");
  if (document.takeInteger("compression", 0) != 0 || document.takeInteger("fileFormat", 0) != 0) {
    throw Refusal("pages are sent as raw lines only");
  }
  document.expectNoMore();
  parameters.takeMap("usbParameters");
  parameters.expectNoMore();
  return settings;
}

}  // namespace sim
