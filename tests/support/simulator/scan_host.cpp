#include "support/simulator/scan_host.h"

#include <stdexcept>

namespace qvn::test {
namespace {

constexpr std::size_t kHeader = 8;

std::uint16_t little16(const Bytes& bytes, std::size_t offset) {
  return static_cast<std::uint16_t>(bytes.at(offset) | bytes.at(offset + 1) << 8);
}

Bytes twoNumbers(std::uint16_t first, std::uint16_t second) {
  return {static_cast<std::uint8_t>(first & 0xFF), static_cast<std::uint8_t>(first >> 8),
          static_cast<std::uint8_t>(second & 0xFF), static_cast<std::uint8_t>(second >> 8), 0};
}

bool hasLetters(const Bytes& message, std::string_view letters) {
  return message.size() > letters.size() &&
         std::string(message.begin() + 1,
                     message.begin() + 1 + static_cast<std::ptrdiff_t>(letters.size())) == letters;
}

// Where a message has the length of its payload; 0 when it has none.
std::size_t lengthAt(const Bytes& header) {
  if (hasLetters(header, "sd") || hasLetters(header, "sv") || hasLetters(header, "cd")) return 3;
  if (hasLetters(header, "dpg")) return 6;
  if (header.at(1) == 'F' && header.at(2) < 5) return 4;
  return 0;
}

}  // namespace

Bytes ScanHost::receive() {
  Bytes header = stream_.receive(kHeader);
  if (header.size() < kHeader || lengthAt(header) == 0) return header;
  return header + stream_.receive(little16(header, lengthAt(header)));
}

std::string ScanHost::ask(std::string_view command) {
  send(command);
  return toHex(receive());
}

void ScanHost::set(std::uint16_t dpi, ScanFormat format, const ScanArea& area) {
  const Bytes commands[] = {
      bytesOf("\x1BSD") + twoNumbers(dpi, dpi),
      bytesOf("\x1BSC") + Bytes{static_cast<std::uint8_t>(format), 0, 0, 0, 0},
      bytesOf("\x1BSM") + twoNumbers(area.left, area.top),
      bytesOf("\x1BSZ") + twoNumbers(area.width, area.height),
  };
  for (const Bytes& command : commands) {
    stream_.send(command);
    if (toHex(receive()) != kScanGood) throw std::runtime_error("refused: " + toHex(command));
  }
}

void ScanHost::setSource(std::string_view source) {
  const Bytes text = bytesOf("source=" + std::string(source) + "\n");
  stream_.send(bytesOf("\x1B"
                       "DPS") +
               Bytes{0, 0, static_cast<std::uint8_t>(text.size()), 0} + text);
  if (toHex(receive()) != kScanGood) throw std::runtime_error("refused: " + std::string(source));
}

ScannedPage ScanHost::scan() {
  send(kScanGo);
  return receivePage();
}

ScannedPage ScanHost::receivePage() {
  ScannedPage page;
  for (;;) {
    Bytes message = receive();
    if (isScanStatus(message) || message.size() < kHeader) {
      page.status = toHex(message);
      return page;
    }
    if (!isScanData(message)) {
      page.replies.push_back(std::move(message));
      continue;
    }
    page.blocks.push_back({message.size() - kHeader, message[5], little16(message, 6)});
    page.data.insert(page.data.end(), message.begin() + kHeader, message.end());
  }
}

bool isScanData(const Bytes& message) { return hasLetters(message, "sd"); }

bool isScanStatus(const Bytes& message) { return hasLetters(message, "SS"); }

std::string textOf(const Bytes& message) {
  return std::string(message.begin() + static_cast<std::ptrdiff_t>(std::min(kHeader, message.size())),
                     message.end());
}

}  // namespace qvn::test
