#include "shared/streams/store_document.h"

#include <algorithm>
#include <cstddef>

#include "shared/base/big_endian.h"

namespace qvn::shared {
namespace {

constexpr std::size_t kFrameLength = 8;
constexpr std::uint8_t kFrameMarks[] = {0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF};

constexpr std::string_view kBlanks = " \t\r\n";
constexpr std::string_view kNameEnds = " \t\r\n=/>";

std::string_view from(std::string_view text, std::size_t at) {
  return text.substr(std::min(at, text.size()));
}

std::string_view withoutBlanks(std::string_view text) { return from(text, text.find_first_not_of(kBlanks)); }

// What follows the first `end`; empty when there is none.
std::string_view behind(std::string_view text, std::string_view end) {
  const std::size_t at = text.find(end);
  return at == std::string_view::npos ? std::string_view() : text.substr(at + end.size());
}

std::string_view takeName(std::string_view& text) {
  const std::string_view name = text.substr(0, text.find_first_of(kNameEnds));
  text.remove_prefix(name.size());
  return name;
}

// What follows the opening bracket of the root element. Declaration and comments come before it.
std::string_view rootOf(std::string_view document) {
  for (;;) {
    document = withoutBlanks(document);
    if (document.starts_with("<?")) {
      document = behind(document, "?>");
    } else if (document.starts_with("<!--")) {
      document = behind(document, "-->");
    } else {
      return document.starts_with('<') ? document.substr(1) : std::string_view();
    }
  }
}

// Of the requestID among a start tag's attributes; empty when there is none in front of what is no attribute.
std::string_view idAmong(std::string_view attributes) {
  for (;;) {
    attributes = withoutBlanks(attributes);
    const std::string_view name = takeName(attributes);
    attributes = withoutBlanks(attributes);
    if (name.empty() || !attributes.starts_with('=')) return {};
    attributes = withoutBlanks(attributes.substr(1));
    const char quote = attributes.empty() ? '\0' : attributes.front();
    if (quote != '"' && quote != '\'') return {};
    attributes.remove_prefix(1);
    const std::size_t end = attributes.find(quote);
    if (end == std::string_view::npos) return {};
    if (name == "requestID") return attributes.substr(0, end);
    attributes.remove_prefix(end + 1);
  }
}

std::string_view payloadOf(std::span<const std::uint8_t> block) {
  if (block.size() >= kFrameLength && std::ranges::find(kFrameMarks, block[0]) != std::end(kFrameMarks)) {
    const std::size_t length = readBigEndian(block.subspan<4, kNumberLength>());
    block = block.subspan(kFrameLength);
    block = block.first(std::min(length, block.size()));
  }
  return {reinterpret_cast<const char*>(block.data()), block.size()};
}

}  // namespace

std::string_view requestIdOf(std::string_view document) {
  std::string_view root = rootOf(document);
  return takeName(root) == "method" ? idAmong(root) : std::string_view();
}

std::string_view answeredIdOf(std::span<const std::uint8_t> block) {
  std::string_view root = rootOf(payloadOf(block));
  const std::string_view name = takeName(root);
  return name == "response" || name == "exception" ? idAmong(root) : std::string_view();
}

}  // namespace qvn::shared
