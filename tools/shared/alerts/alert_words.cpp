#include "shared/alerts/alert_words.h"

#include <algorithm>
#include <cstdio>

#include "common/byte_reader.h"

namespace qvn::alerts {

namespace {

constexpr std::uint8_t kStartOfPacket = 0xA5;
constexpr std::size_t kShortestAlert = 8;
constexpr std::size_t kCommandOffset = 4;
constexpr std::size_t kSubCommandOffset = 5;
constexpr std::size_t kExtensionOffset = 6;
constexpr std::size_t kExtendedOffset = 7;
constexpr std::size_t kLanguageOffset = 9;
constexpr std::size_t kLanguageKindOffset = 10;

// A status alert: three bytes without meaning follow its head, then the two entries.
constexpr std::size_t kStatusLength = 24;
constexpr std::size_t kBusyOffset = 18;
constexpr std::size_t kStatusWordOffset = 22;

// The cache: a head, then entries of id (16 bits), length (8 bits) and data.
constexpr std::size_t kCacheHead = 7;
constexpr std::size_t kEntryHead = 3;
constexpr std::uint16_t kBusyEntry = 17;
constexpr std::uint16_t kStatusEntry = 18;

// clang-format off
constexpr Condition kConditions[] = {
    {0x8000, "paper low",                  "media-low-warning"},
    {0x4000, "out of paper",               "media-empty-error"},
    {0x2000, "toner low",                  "toner-low-warning"},
    {0x1000, "out of toner",               "toner-empty-error"},
    {0x0800, "cover open",                 "cover-open-error"},
    {0x0400, "paper jam",                  "media-jam-error"},
    {0x0200, "offline",                    "offline-report"},
    {0x0100, "service needed",             "service-needed-warning"},
    {0x0080, "input tray missing",         "input-tray-missing-error"},
    {0x0040, "output tray missing",        "output-tray-missing-error"},
    {0x0020, "marker supply missing",      "marker-supply-missing-error"},
    {0x0010, "output tray almost full",    "output-area-almost-full-warning"},
    {0x0008, "output tray full",           "output-area-full-error"},
    {0x0004, "an input tray is empty",     "media-empty-warning"},
    {0x0002, "maintenance overdue",        "service-needed-report"},
};
// clang-format on

std::string hex(unsigned value, int digits) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%0*X", digits, value);
  return text;
}

bool isPowerOnReset(const ByteReader& packet) {
  return packet.length() == 8 && packet.has(kCommandOffset, {0xFF, 0x01, 0x00, 0x00});
}

bool isStatus(const ByteReader& packet) {
  return packet.length() >= kStatusLength &&
         packet.has(kCommandOffset, {0xF0, 0x73, 0x01, 0x01, 0x10, 0x01, 0x10, 0x00});
}

bool isCancelAcknowledge(const ByteReader& packet) {
  return packet.length() == 12 &&
         packet.has(kCommandOffset, {0xF0, 0x73, 0x01, 0x01, 0x08, 0x01, 0x08, 0x00});
}

// The alerts that clients ask for by kind and whose meaning is the device's own.
Alert decodeByKind(const ByteReader& packet) {
  const std::uint8_t subCommand = packet.u8(kSubCommandOffset).value_or(0);
  switch (subCommand) {
    case 0x03:
      return {AlertKind::Extension, "extension alert " + hex(packet.u8(kExtensionOffset).value_or(0), 2), {}};
    case 0x73:
      if (packet.u8(kExtendedOffset) == 1) return {AlertKind::Extended, "extended alert", {}};
      if (packet.u8(kLanguageOffset) == 1) {
        return {AlertKind::ExtendedWithLanguage, "extended alert with language", {}};
      }
      return {AlertKind::ExtendedWithLanguage,
              "extended alert with language, kind " + hex(packet.u8(kLanguageKindOffset).value_or(0), 2),
              {}};
    case 0xE1:
      return {AlertKind::Panel, "the operator panel has changed", {}};
    default:
      return {AlertKind::Other, "alert " + hex(subCommand, 2), {}};
  }
}

}  // namespace

std::span<const Condition> conditions() { return kConditions; }

std::vector<const Condition*> conditionsIn(std::uint16_t statusWord) {
  std::vector<const Condition*> found;
  for (const Condition& condition : kConditions) {
    if ((statusWord & condition.bit) != 0) found.push_back(&condition);
  }
  return found;
}

std::string conditionWords(std::uint16_t statusWord) {
  std::string words;
  unsigned nameless = statusWord;
  for (const Condition* condition : conditionsIn(statusWord)) {
    words += (words.empty() ? "" : ", ") + std::string(condition->words);
    nameless &= ~static_cast<unsigned>(condition->bit);
  }
  if (nameless != 0) words += (words.empty() ? "" : ", ") + std::string("condition ") + hex(nameless, 4);
  return words.empty() ? "ready" : words;
}

std::string statusWords(const Status& status) {
  return (status.busy ? "busy: " : "idle: ") + conditionWords(status.word);
}

Alert decodeAlert(std::span<const std::uint8_t> bytes) {
  const ByteReader packet(bytes.data(), bytes.size());
  if (packet.length() < kShortestAlert || packet.u8(0) != kStartOfPacket ||
      (packet.u8(kCommandOffset).value_or(0) & 0xF0) != 0xF0) {
    return {AlertKind::None, "no alert", {}};
  }
  if (isPowerOnReset(packet)) return {AlertKind::PowerOnReset, "the printer was switched on or reset", {}};
  if (isCancelAcknowledge(packet)) {
    return {AlertKind::CancelAcknowledged, "the printer has cancelled the job", {}};
  }
  if (!isStatus(packet)) return decodeByKind(packet);
  const Status status{packet.u8(kBusyOffset).value_or(0) != 0, packet.u16(kStatusWordOffset).value_or(0)};
  return {AlertKind::Status, statusWords(status), status};
}

std::vector<CacheEntry> cacheEntries(std::span<const std::uint8_t> bytes) {
  const ByteReader cache(bytes.data(), bytes.size());
  std::vector<CacheEntry> entries;
  for (std::size_t at = kCacheHead; at + kEntryHead <= cache.length();) {
    const std::size_t length = cache.u8(at + 2).value_or(0);
    const std::size_t data = at + kEntryHead;
    if (data + length > cache.length()) break;
    entries.push_back({cache.u16(at).value_or(0), bytes.subspan(data, length)});
    at = data + length;
  }
  return entries;
}

std::optional<Status> decodeCache(std::span<const std::uint8_t> bytes) {
  std::optional<std::uint8_t> busy;
  std::optional<std::uint16_t> word;
  for (const CacheEntry& entry : cacheEntries(bytes)) {
    const ByteReader data(entry.bytes.data(), entry.bytes.size());
    if (entry.id == kBusyEntry && data.length() == 1 && !busy) busy = data.u8(0);
    if (entry.id == kStatusEntry && data.length() == 2 && !word) word = data.u16(0);
  }
  if (!busy || !word) return std::nullopt;
  return Status{*busy != 0, *word};
}

}  // namespace qvn::alerts
