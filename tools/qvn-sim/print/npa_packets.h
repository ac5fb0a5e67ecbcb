// The packets that the simulated printer understands and sends (IEEE 1284.1 framing), as tables.
//
//   offset 0     A5, start of packet
//          1..2  number of bytes after this field, big-endian
//          3     flags
//          4     command
//          5     sub-command
//          6..   parameters
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "base/bytes.h"

namespace sim::npa {

inline constexpr std::uint8_t kStartOfPacket = 0xA5;
inline constexpr std::size_t kFlags = 3;
inline constexpr std::size_t kCommand = 4;
inline constexpr std::size_t kSubCommand = 5;
inline constexpr std::size_t kParameters = 6;

// What precedes the counted bytes, and the shortest and longest packet that is taken.
inline constexpr std::size_t kUncounted = 3;
inline constexpr std::size_t kShortestPacket = 5;
inline constexpr std::size_t kLongestPacket = 4096;

inline constexpr std::uint8_t kNotARequest = 0x20;
inline constexpr std::uint8_t kRejected = 0x80;
inline constexpr std::uint8_t kReplyFlags = kNotARequest;
inline constexpr std::uint8_t kRejectFlags = kNotARequest | kRejected;

enum class Command : std::uint8_t {
  Summary,
  StartJob,
  EndJob,
  JobsCompleted,
  NameJob,
  Lock,
  Unlock,
  SetDate,
  Cache,
  StatusAlerts,
  ExtensionAlerts,
  PanelAlerts,
  ExtendedAlerts,
  LanguageAlerts,
  EnterNpaMode,
};

struct CommandEntry {
  Command command;
  std::string_view name;                // as fault switches and traces call it
  std::array<std::uint8_t, 4> pattern;  // command, sub-command and the parameters that tell it from others
  std::size_t patternLength;
  std::size_t shortest;  // whole packet; a shorter one is rejected
};

// The first entry whose pattern begins the bytes from kCommand on is the command.
inline constexpr std::array kCommands = {
    CommandEntry{Command::Summary, "summary", {0x01, 0x00}, 2, 6},
    CommandEntry{Command::StartJob, "start-job", {0x05, 0x00}, 2, 9},
    CommandEntry{Command::EndJob, "end-job", {0x05, 0x01}, 2, 9},
    CommandEntry{Command::JobsCompleted, "jobs-completed", {0x05, 0x02}, 2, 11},
    CommandEntry{Command::NameJob, "name-job", {0xE0, 0x02}, 2, 10},
    CommandEntry{Command::Lock, "lock", {0xE0, 0x82, 0x02, 0x01}, 4, 8},
    CommandEntry{Command::Unlock, "unlock", {0xE0, 0x82, 0x02, 0x02}, 4, 8},
    CommandEntry{Command::SetDate, "date", {0xE0, 0x84, 0x00, 0x01}, 4, 16},
    CommandEntry{Command::Cache, "cache", {0xE0, 0x81, 0x00, 0xFF}, 4, 8},
    CommandEntry{Command::StatusAlerts, "status-alerts", {0x03, 0x03}, 2, 9},
    CommandEntry{Command::ExtensionAlerts, "extension-alerts", {0xE0, 0x03}, 2, 7},
    CommandEntry{Command::PanelAlerts, "panel-alerts", {0xE0, 0xE1, 0x03}, 3, 8},
    CommandEntry{Command::ExtendedAlerts, "extended-alerts", {0xE0, 0x73, 0x01, 0x01}, 4, 9},
    CommandEntry{Command::LanguageAlerts, "language-alerts", {0xE0, 0x73, 0x07, 0x08}, 4, 18},
    CommandEntry{Command::EnterNpaMode, "enter-npa-mode", {0xA4, 0x5B, 0xA4, 0x5B}, 4, 19},
};

// Offsets inside single packets.
inline constexpr std::size_t kJobIdOffset = 7;           // start job reply, end job request
inline constexpr std::size_t kNamedJobIdOffset = 6;      // name job request
inline constexpr std::size_t kNameLengthOffset = 8;      // name job request; counts a terminating zero byte
inline constexpr std::size_t kNameOffset = 9;            // name job request
inline constexpr std::size_t kLockGrantOffset = 8;       // lock reply: 0 granted, 1 busy
inline constexpr std::size_t kMaxPacketSizeOffset = 29;  // summary reply
inline constexpr std::size_t kSummaryReplyLength = 31;
inline constexpr std::size_t kJobCompleteReplyLength = 26;
inline constexpr std::size_t kJobPendingReplyLength = 11;

// What the printer sends unasked, from kCommand on.
inline constexpr std::array<std::uint8_t, 4> kPowerOnReset = {0xFF, 0x01, 0x00, 0x00};
inline constexpr std::array<std::uint8_t, 8> kCancelAcknowledge = {0xF0, 0x73, 0x01, 0x01,
                                                                   0x08, 0x01, 0x08, 0x00};
inline constexpr std::array<std::uint8_t, 8> kStatusAlert = {0xF0, 0x73, 0x01, 0x01, 0x10, 0x01, 0x10, 0x00};
// After kStatusAlert: three bytes without meaning, then entries as in the cache.
inline constexpr std::size_t kStatusAlertEntries = 15;

// The cache reply from kCommand on, then seven bytes without meaning, then entries: 16-bit id, length, data.
inline constexpr std::array<std::uint8_t, 4> kCacheReply = {0xE0, 0x81, 0x00, 0xF0};
inline constexpr std::size_t kCacheEntries = 15;
inline constexpr std::uint16_t kBusyEntry = 17;    // 1 byte
inline constexpr std::uint16_t kStatusEntry = 18;  // 2 bytes

// The command that a complete packet asks for.
std::optional<Command> commandOf(ByteView packet);
// By the names that faults call them; a packet that is no known command has none.
bool isNamed(std::string_view name);
std::string_view nameOf(std::optional<Command> command);
const CommandEntry& entryOf(Command command);

// A packet of `total` bytes: flags, then `body` from kCommand on, then zero bytes. `total` 0 is as long as
// the body needs.
Bytes makePacket(std::uint8_t flags, ByteView body, std::size_t total = 0);

std::uint16_t readBig16(ByteView packet, std::size_t offset);
void writeBig16(Bytes& packet, std::size_t offset, std::uint16_t value);

}  // namespace sim::npa
