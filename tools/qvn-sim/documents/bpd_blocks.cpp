#include "documents/bpd_blocks.h"

#include <algorithm>
#include <array>

namespace sim::bpd {
namespace {

constexpr std::array<std::uint8_t, 4> kBlock = {0x42, 0x4B, 0x01, 0x00};
constexpr std::array<std::uint8_t, 4> kReadError = {0x42, 0x4B, 0x02, 0x00};
constexpr std::size_t kLengthAt = 4;

constexpr std::array<std::uint8_t, 6> kFrameLeads = {0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF};

void writeBig32(std::uint8_t* to, std::size_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) *to++ = static_cast<std::uint8_t>(value >> shift & 0xFF);
}

Bytes makeHeader(ByteView start, std::size_t length) {
  Bytes header(start.begin(), start.end());
  header.resize(kHeaderLength);
  writeBig32(header.data() + kLengthAt, length);
  return header;
}

ByteView bytesOf(std::string_view text) {
  return ByteView(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
}

}  // namespace

bool isHeader(ByteView bytes) {
  return bytes.size() >= kHeaderLength && std::equal(kBlock.begin(), kBlock.end(), bytes.begin()) &&
         payloadLength(bytes) <= kLongestPayload;
}

std::size_t payloadLength(ByteView header) {
  std::size_t length = 0;
  for (const std::uint8_t byte : header.subspan(kLengthAt, 4)) length = length << 8 | byte;
  return length;
}

Bytes makeBlock(ByteView payload) {
  Bytes block = makeHeader(kBlock, payload.size());
  block.insert(block.end(), payload.begin(), payload.end());
  return block;
}

Bytes makeBlock(std::string_view payload) { return makeBlock(bytesOf(payload)); }

Bytes makeReadError(std::uint32_t code) {
  Bytes block = makeHeader(kReadError, 4);
  block.resize(kHeaderLength + 4);
  writeBig32(block.data() + kHeaderLength, code);
  return block;
}

void writeScanDataHeader(std::uint8_t* to, std::size_t promised) {
  to = std::copy(kBlock.begin(), kBlock.end(), to);
  writeBig32(to, std::min(promised + kScanDataTag.size(), kLongestPayload));
  std::copy(kScanDataTag.begin(), kScanDataTag.end(), to + 4);
}

Bytes makeReplyFrame(std::size_t lead, std::string_view document, std::size_t excess) {
  Bytes framed = makeHeader(Bytes{kFrameLeads[lead % kFrameLeads.size()], 0, 0, 0}, document.size() + excess);
  const ByteView bytes = bytesOf(document);
  framed.insert(framed.end(), bytes.begin(), bytes.end());
  return framed;
}

}  // namespace sim::bpd
