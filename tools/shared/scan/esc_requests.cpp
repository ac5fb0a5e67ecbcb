#include "shared/scan/esc_requests.h"

#include <algorithm>
#include <string_view>

namespace qvn::scan {

namespace {

constexpr std::uint8_t kEscape = 0x1B;

// Where a command has its parameters.
constexpr std::size_t kColorFormat = 3;
constexpr std::size_t kFirstNumber = 3;
constexpr std::size_t kSecondNumber = 5;
constexpr std::size_t kTextLength = 6;

Request command(std::string_view letters) {
  Request request(kHeaderLength);
  request[0] = kEscape;
  std::copy(letters.begin(), letters.end(), request.begin() + 1);
  return request;
}

void put16(Request& request, std::size_t offset, std::uint32_t number) {
  request[offset] = static_cast<std::uint8_t>(number);
  request[offset + 1] = static_cast<std::uint8_t>(number >> 8);
}

Request twoNumbers(std::string_view letters, std::uint32_t first, std::uint32_t second) {
  Request request = command(letters);
  put16(request, kFirstNumber, first);
  put16(request, kSecondNumber, second);
  return request;
}

}  // namespace

Request versionRequest() { return command("SV"); }
Request lockRequest() { return command("DSL"); }
Request unlockRequest() { return command("DSU"); }

Request sourceRequest(Source source) {
  const std::string_view text = source == Source::Feeder ? "source=feeder\n" : "source=flatbed\n";
  Request request = command("DPS");
  put16(request, kTextLength, static_cast<std::uint32_t>(text.size()));
  request.resize(kHeaderLength + text.size());
  std::copy(text.begin(), text.end(), request.begin() + kHeaderLength);
  return request;
}

// Across and along.
Request resolutionRequest(std::uint32_t dpi) { return twoNumbers("SD", dpi, dpi); }

Request colorFormatRequest(ColorMode mode) {
  Request request = command("SC");
  request[kColorFormat] = static_cast<std::uint8_t>(mode);
  return request;
}

Request clippingRequest(const Area& area) { return twoNumbers("SM", area.left, area.top); }
Request sizeRequest(const Area& area) { return twoNumbers("SZ", area.width, area.height); }

}  // namespace qvn::scan
