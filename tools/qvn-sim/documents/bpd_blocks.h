// The blocks in which a BpdPrinter's scanner and its hosts talk, over TCP.
//
//   offset 0..1  42 4B
//          2     kind: 01 a block, 02 a read that failed (from the device only)
//          3     00
//          4..7  length of the payload, big-endian
//          8..   payload: a document or tagged data; a result code, 32 bits big-endian
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "base/bytes.h"

namespace sim::bpd {

inline constexpr std::size_t kHeaderLength = 8;
inline constexpr std::size_t kLongestPayload = 131072;

inline constexpr std::string_view kScanDataTag = "<Scan.Data>";
inline constexpr std::size_t kLongestScanData = kLongestPayload - kScanDataTag.size();
// What stands before the bytes of a page.
inline constexpr std::size_t kScanDataHeaderLength = kHeaderLength + kScanDataTag.size();

// Whether these bytes begin with the header of a block as hosts send them.
bool isHeader(ByteView bytes);
// The length of the payload that a header tells.
std::size_t payloadLength(ByteView header);

Bytes makeBlock(ByteView payload);
Bytes makeBlock(std::string_view payload);
Bytes makeReadError(std::uint32_t code);
// The header of a block of scan data, `promised` bytes of it, cut to what a block may have; and the tag.
void writeScanDataHeader(std::uint8_t* to, std::size_t promised);

// A document in the frame that replies may have: one of six lead bytes, 00 00 00, the length, the document.
// The frame promises `excess` bytes more than it has.
Bytes makeReplyFrame(std::size_t lead, std::string_view document, std::size_t excess);

}  // namespace sim::bpd
