// What a printer's alerts and its status cache say, in words: for whoever shows them to people or to a
// spooler.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace qvn::alerts {

// One thing that a printer may report of itself.
struct Condition {
  std::uint16_t bit;   // of the status word (entry 18 of the cache)
  const char* words;   // "out of paper"
  const char* reason;  // as printer-state-reasons of IPP (RFC 8011, 5.4.12), severity included
};

// Every condition that has words. The protocol leaves the status word to the device; the bits are read as
// those of hrPrinterDetectedErrorState (RFC 2790), which is how printers report the same over SNMP.
std::span<const Condition> conditions();

// The two cache entries that status alerts refresh.
struct Status {
  bool busy;           // entry 17: with a job
  std::uint16_t word;  // entry 18
};

// The conditions whose bits are set.
std::vector<const Condition*> conditionsIn(std::uint16_t statusWord);

// "out of paper, cover open"; "ready"; bits without words as a number.
std::string conditionWords(std::uint16_t statusWord);

// "busy: out of paper, cover open"; "idle: ready".
std::string statusWords(const Status& status);

enum class AlertKind {
  None,  // the bytes are no alert
  PowerOnReset,
  Status,
  CancelAcknowledged,
  Extension,
  Extended,
  ExtendedWithLanguage,
  Panel,
  Other,
};

struct Alert {
  AlertKind kind;
  std::string words;             // a sentence without its full stop
  std::optional<Status> status;  // of a status alert
};

// Decodes one alert: the whole NPA packet (IEEE 1284.1), as QvnAlertCallback gets it. Takes any bytes.
Alert decodeAlert(std::span<const std::uint8_t> packet);

struct CacheEntry {
  std::uint16_t id;
  std::span<const std::uint8_t> bytes;  // part of the cache
};

// The entries of what QvnGetCachePrinter gives, in their order; one whose length goes past the end is left
// out, with all that follows.
std::vector<CacheEntry> cacheEntries(std::span<const std::uint8_t> cache);

// The status in it; none when one of the two entries is missing.
std::optional<Status> decodeCache(std::span<const std::uint8_t> cache);

}  // namespace qvn::alerts
