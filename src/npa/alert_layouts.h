// The layouts of what printers tell of themselves, as NPA packets: the alerts, and the status cache that some
// of them refresh.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "common/byte_reader.h"
#include "npa/npa_packet.h"

namespace qvn::npa {

// What kind of alert it is the sub-command tells (kExtendedAlerts is one), and of some kinds further bytes.
inline constexpr std::uint8_t kExtensionAlert = 0x03;
inline constexpr std::uint8_t kPanelAlert = 0xE1;
inline constexpr std::size_t kExtensionOffset = 6;
inline constexpr std::size_t kWithoutLanguageOffset = 7;  // 1: an extended alert without a language id
inline constexpr std::size_t kLanguageOffset = 9;         // 1: one with a language id
inline constexpr std::size_t kLanguageKindOffset = 10;    // which, of the others

// An alert that is told by its length and by its bytes from the command on.
struct AlertLayout {
  std::size_t length;
  bool mayBeLonger;
  std::array<std::uint8_t, 8> bytes;
  std::size_t byteCount;
};

// clang-format off
//                                              length  longer  from the command on                               so many
inline constexpr AlertLayout kPowerOnReset      = { 8, false, {0xFF, 0x01, 0x00, 0x00},                              4};
inline constexpr AlertLayout kStatusAlert       = {24, true,  {0xF0, 0x73, 0x01, 0x01, 0x10, 0x01, 0x10, 0x00},      8};
inline constexpr AlertLayout kCancelAcknowledge = {12, false, {0xF0, 0x73, 0x01, 0x01, 0x08, 0x01, 0x08, 0x00},      8};
// clang-format on

inline bool hasLayout(const ByteReader& packet, const AlertLayout& layout) {
  const auto found = packet.bytes(kCommandOffset, layout.byteCount);
  return packet.u8(0) == kStartOfPacket && found.size() == layout.byteCount &&
         std::equal(found.begin(), found.end(), layout.bytes.begin()) &&
         (packet.length() == layout.length || (layout.mayBeLonger && packet.length() > layout.length));
}

// An entry of the cache: its number, how long it is, and where a status alert has its new content.
struct StatusEntry {
  std::uint16_t id;
  std::size_t length;
  std::size_t alertOffset;

  std::span<const std::uint8_t> in(const ByteReader& statusAlert) const {
    return statusAlert.bytes(alertOffset, length);
  }
};
inline constexpr StatusEntry kJobEntry = {17, 1, 18};  // whether the printer has a job
inline constexpr StatusEntry kStatusWordEntry = {18, 2, 22};

// The cache is the reply to GetCacheCommand: the packet's header with E0 81 00 and then F0 or FF, which
// clients do not see, a header of its own, and entries: id (2 bytes, high first), length n (1 byte), n bytes.
inline constexpr std::size_t kCachePacketHeader = 8;
inline constexpr std::size_t kCacheHeader = 7;
inline constexpr std::size_t kShortestCache = 9;
inline constexpr std::size_t kCacheEntryHeader = 3;

inline bool isCache(const ByteReader& packet) {
  return packet.length() >= kShortestCache && (packet.has(kCommandOffset, {0xE0, 0x81, 0x00, 0xF0}) ||
                                               packet.has(kCommandOffset, {0xE0, 0x81, 0x00, 0xFF}));
}

struct CacheEntry {
  std::uint16_t id;
  std::size_t offset;  // of its bytes
  std::size_t length;

  std::size_t end() const { return offset + length; }
};

// The entry that begins at the offset; nothing when the cache ends before it does.
inline std::optional<CacheEntry> cacheEntryAt(const ByteReader& cache, std::size_t offset) {
  const auto id = cache.u16(offset);
  const auto length = cache.u8(offset + 2);
  if (!id || !length) return std::nullopt;
  const CacheEntry entry{*id, offset + kCacheEntryHeader, *length};
  return entry.end() <= cache.length() ? std::optional(entry) : std::nullopt;
}

}  // namespace qvn::npa
