// The ESC commands that the simulated scanner understands and sends, as tables.
//
//   offset 0     1B, escape
//          1..2  or 1..3, the command's letters
//          3..7  parameters, a status or the length of the payload, little-endian
//          8..   payload
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "base/bytes.h"

namespace sim::esc {

inline constexpr std::uint8_t kEscape = 0x1B;
inline constexpr std::size_t kHeaderLength = 8;
inline constexpr std::size_t kLongestPayload = 0xFFFF;

enum class Command : std::uint8_t {
  Version,
  Resolution,
  ColorFormat,
  Clipping,
  Size,
  FeederStatus,
  Filter,
  Processing,
  Raw,
  Exposure,
  Offset,
  Smart,
  ScanLock,
  ScanUnlock,
  CopyLock,
  CopyUnlock,
  SetParameters,
  GetParameters,
  Go,
  Abort,
  PaperSize,
  CopyParameters,
  NetworkScan,
  FaxSpace,
  FaxAbort,
  FaxGet,
  FaxSend,
  FaxStatus,
  HostNames,
  ScanStatus,
  Other,  // framed as a command, and none of the above
};

struct CommandEntry {
  Command command;
  std::string_view name;  // as fault switches call it
  std::array<std::uint8_t, kHeaderLength> header;
  std::size_t recognisedBy;         // so many bytes of the header tell it from others
  std::size_t payloadLengthAt = 0;  // 16 bits; 0 when it has no payload
};

// The first entry that a header begins with is the command.
inline constexpr std::array kCommands = {
    CommandEntry{Command::Version, "version", {0x1B, 'S', 'V'}, 8},
    CommandEntry{Command::Resolution, "resolution", {0x1B, 'S', 'D'}, 3},
    CommandEntry{Command::ColorFormat, "color-format", {0x1B, 'S', 'C'}, 3},
    CommandEntry{Command::Clipping, "clipping", {0x1B, 'S', 'M'}, 3},
    CommandEntry{Command::Size, "size", {0x1B, 'S', 'Z'}, 3},
    CommandEntry{Command::FeederStatus, "feeder-status", {0x1B, 'S', 'F'}, 8},
    CommandEntry{Command::Filter, "filter", {0x1B, 'S', 'I'}, 3},
    CommandEntry{Command::Processing, "processing", {0x1B, 'S', 'J'}, 3},
    CommandEntry{Command::Raw, "raw", {0x1B, 'S', 'R'}, 3},
    CommandEntry{Command::Exposure, "exposure", {0x1B, 'S', 'X'}, 3},
    CommandEntry{Command::Offset, "offset", {0x1B, 'S', 'O'}, 3},
    CommandEntry{Command::Smart, "smart", {0x1B, 'S', 'T'}, 8},
    CommandEntry{Command::ScanLock, "scan-lock", {0x1B, 'D', 'S', 'L'}, 8},
    CommandEntry{Command::ScanUnlock, "scan-unlock", {0x1B, 'D', 'S', 'U'}, 8},
    CommandEntry{Command::CopyLock, "copy-lock", {0x1B, 'D', 'C', 'L'}, 8},
    CommandEntry{Command::CopyUnlock, "copy-unlock", {0x1B, 'D', 'C', 'U'}, 8},
    CommandEntry{Command::SetParameters, "set-parameters", {0x1B, 'D', 'P', 'S'}, 4, 6},
    CommandEntry{Command::GetParameters, "get-parameters", {0x1B, 'D', 'P', 'G'}, 4},
    CommandEntry{Command::Go, "go", {0x1B, 'S', 'G'}, 8},
    CommandEntry{Command::Abort, "abort", {0x1B, 'S', 'A'}, 8},
    CommandEntry{Command::PaperSize, "paper-size", {0x1B, 'C', 'S', 'S'}, 4},
    CommandEntry{Command::CopyParameters, "copy-parameters", {0x1B, 'C', 'P', 'G'}, 8},
    CommandEntry{Command::NetworkScan, "network-scan", {0x1B, 'D', 'H', 'R'}, 4},
    CommandEntry{Command::FaxSpace, "fax-space", {0x1B, 'F', 4, 0}, 4, 4},
    CommandEntry{Command::FaxAbort, "fax-abort", {0x1B, 'F', 5, 0}, 4},
    CommandEntry{Command::FaxGet, "fax-get", {0x1B, 'F', 2, 0}, 4, 4},
    CommandEntry{Command::FaxSend, "fax-send", {0x1B, 'F', 1, 0}, 4, 4},
    CommandEntry{Command::FaxStatus, "fax-status", {0x1B, 'F', 3, 0}, 4, 4},
    CommandEntry{Command::HostNames, "host-names", {0x1B, 'D', 'H', 'L'}, 4},
    CommandEntry{Command::ScanStatus, "scan-status", {0x1B, 'S', 'K', 0}, 4},
    CommandEntry{Command::Other, "other", {0x1B}, 1, 4},
};

enum class Status : std::uint8_t {
  Good = 0,
  Busy = 1,
  BadParameter = 2,
  Aborted = 3,
  FeederEmpty = 5,
};

// Offsets inside single commands.
inline constexpr std::size_t kParameter = 3;        // resolution, colour format, left, width
inline constexpr std::size_t kSecondParameter = 5;  // resolution again, top, height
inline constexpr std::size_t kPageAt = 5;           // scan data: low byte of the page's number
inline constexpr std::size_t kBlockAt = 6;          // scan data: the block's number
inline constexpr std::size_t kStateAt = 4;          // reply to scan-status
inline constexpr std::size_t kWantsReplyAt = 6;     // other: bit 7

// Headers of what the device sends, and where the length of the payload is.
struct ReplyKind {
  std::array<std::uint8_t, 4> letters;
  std::size_t payloadLengthAt;
};
inline constexpr ReplyKind kVersionReply = {{0x1B, 's', 'v'}, 3};
inline constexpr ReplyKind kScanData = {{0x1B, 's', 'd'}, 3};
inline constexpr ReplyKind kCopyData = {{0x1B, 'c', 'd'}, 3};
inline constexpr ReplyKind kParametersReply = {{0x1B, 'd', 'p', 'g'}, 6};
inline constexpr ReplyKind kFaxSpaceReply = {{0x1B, 'F', 4, 0}, 4};
inline constexpr ReplyKind kFaxAbortReply = {{0x1B, 'F', 5, 0}, 4};
inline constexpr ReplyKind kFaxGetReply = {{0x1B, 'F', 2, 0}, 4};
inline constexpr ReplyKind kFaxSendReply = {{0x1B, 'F', 1, 0}, 4};
inline constexpr ReplyKind kFaxStatusReply = {{0x1B, 'F', 3, 0}, 4};

// The entry of a command whose header begins these bytes.
const CommandEntry& entryOf(ByteView header);
// By the names that faults call them.
bool isNamed(std::string_view name);
std::string_view nameOf(Command command);

Bytes makeStatus(Status status, std::uint8_t detail = 0);
Bytes makeReply(const ReplyKind& kind, ByteView payload = {});
Bytes makeReply(const ReplyKind& kind, std::string_view text);
// `promised` is the length of the payload, cut to what a header can say; of the numbers the low bits go.
void writeScanDataHeader(std::uint8_t* to, std::size_t promised, std::uint64_t page, std::uint64_t block);
// Four bytes and four zero bytes.
Bytes makeHeader(ByteView letters);

}  // namespace sim::esc
