#include "shared/alerts/alert_words.h"

#include <cstdio>

#include "npa/alert_layouts.h"

namespace qvn::alerts {

namespace {

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

// The alerts that clients ask for by kind and whose meaning is the device's own.
Alert decodeByKind(const ByteReader& packet) {
  const std::uint8_t subCommand = packet.u8(npa::kSubCommandOffset).value_or(0);
  switch (subCommand) {
    case npa::kExtensionAlert:
      return {AlertKind::Extension,
              "extension alert " + hex(packet.u8(npa::kExtensionOffset).value_or(0), 2),
              {}};
    case npa::kExtendedAlerts:
      if (packet.u8(npa::kWithoutLanguageOffset) == 1) return {AlertKind::Extended, "extended alert", {}};
      if (packet.u8(npa::kLanguageOffset) == 1) {
        return {AlertKind::ExtendedWithLanguage, "extended alert with language", {}};
      }
      return {AlertKind::ExtendedWithLanguage,
              "extended alert with language, kind " + hex(packet.u8(npa::kLanguageKindOffset).value_or(0), 2),
              {}};
    case npa::kPanelAlert:
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
  if (!npa::isAlert(packet)) return {AlertKind::None, "no alert", {}};
  if (npa::hasLayout(packet, npa::kPowerOnReset)) {
    return {AlertKind::PowerOnReset, "the printer was switched on or reset", {}};
  }
  if (npa::hasLayout(packet, npa::kCancelAcknowledge)) {
    return {AlertKind::CancelAcknowledged, "the printer has cancelled the job", {}};
  }
  if (!npa::hasLayout(packet, npa::kStatusAlert)) return decodeByKind(packet);
  const Status status{packet.u8(npa::kJobEntry.alertOffset).value_or(0) != 0,
                      packet.u16(npa::kStatusWordEntry.alertOffset).value_or(0)};
  return {AlertKind::Status, statusWords(status), status};
}

std::vector<CacheEntry> cacheEntries(std::span<const std::uint8_t> bytes) {
  const ByteReader cache(bytes.data(), bytes.size());
  std::vector<CacheEntry> entries;
  for (auto entry = npa::cacheEntryAt(cache, npa::kCacheHeader); entry;
       entry = npa::cacheEntryAt(cache, entry->end())) {
    entries.push_back({entry->id, bytes.subspan(entry->offset, entry->length)});
  }
  return entries;
}

std::optional<Status> decodeCache(std::span<const std::uint8_t> bytes) {
  std::optional<std::uint8_t> busy;
  std::optional<std::uint16_t> word;
  for (const CacheEntry& entry : cacheEntries(bytes)) {
    const ByteReader data(entry.bytes.data(), entry.bytes.size());
    const auto is = [&](const npa::StatusEntry& wanted) {
      return entry.id == wanted.id && data.length() == wanted.length;
    };
    if (is(npa::kJobEntry) && !busy) busy = data.u8(0);
    if (is(npa::kStatusWordEntry) && !word) word = data.u16(0);
  }
  if (!busy || !word) return std::nullopt;
  return Status{*busy != 0, *word};
}

}  // namespace qvn::alerts
