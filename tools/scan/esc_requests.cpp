#include "esc_requests.h"

#include <string_view>

namespace qvn::scan {

namespace {

constexpr std::uint8_t kEscape = 0x1B;

void append16(Request& request, std::uint32_t number) {
  request.push_back(static_cast<std::uint8_t>(number));
  request.push_back(static_cast<std::uint8_t>(number >> 8));
}

Request command(std::string_view letters) {
  Request request{kEscape};
  request.insert(request.end(), letters.begin(), letters.end());
  return request;
}

Request padded(Request request) {
  request.resize(kHeaderLength);
  return request;
}

Request twoNumbers(std::string_view letters, std::uint32_t first, std::uint32_t second) {
  Request request = command(letters);
  append16(request, first);
  append16(request, second);
  return padded(std::move(request));
}

}  // namespace

Request versionRequest() { return padded(command("SV")); }
Request lockRequest() { return padded(command("DSL")); }
Request unlockRequest() { return padded(command("DSU")); }

Request sourceRequest(Source source) {
  const std::string_view text = source == Source::Feeder ? "source=feeder\n" : "source=flatbed\n";
  Request request = command("DPS");
  append16(request, 0);
  append16(request, static_cast<std::uint32_t>(text.size()));
  request.insert(request.end(), text.begin(), text.end());
  return request;
}

// Across and along.
Request resolutionRequest(std::uint32_t dpi) { return twoNumbers("SD", dpi, dpi); }

Request colorFormatRequest(ColorMode mode) {
  Request request = command("SC");
  request.push_back(static_cast<std::uint8_t>(mode));
  return padded(std::move(request));
}

Request clippingRequest(const Area& area) { return twoNumbers("SM", area.left, area.top); }
Request sizeRequest(const Area& area) { return twoNumbers("SZ", area.width, area.height); }

}  // namespace qvn::scan
