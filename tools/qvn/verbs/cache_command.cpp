// qvn cache: what a printer's status cache holds.
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "shared/alerts/alert_words.h"
#include "shared/client/devices.h"
#include "shared/client/failure.h"
#include "shared/client/open_printer.h"
#include "shared/client/printer_questions.h"
#include "shared/client/text_values.h"
#include "verbs/commands.h"
#include "verbs/verb.h"

namespace qvn::cli {

namespace {

constexpr std::uint32_t kBusyEntry = 17;
constexpr std::uint32_t kStatusEntry = 18;

// What an entry says, in words; none for those that the library does not know.
Json meaning(const alerts::CacheEntry& entry) {
  if (entry.id == kBusyEntry && entry.bytes.size() == 1) {
    return entry.bytes[0] != 0 ? "a job is open" : "no job is open";
  }
  if (entry.id == kStatusEntry && entry.bytes.size() == 2) {
    return alerts::conditionWords(static_cast<std::uint16_t>(entry.bytes[0] << 8 | entry.bytes[1]));
  }
  return nullptr;
}

void showCache(const std::string& name, bool json, bool raw) {
  const Session session;
  const Device printer = selectPrinter(session, name);
  openDevice(session, printer);
  std::vector<std::uint8_t> cache;
  const std::uint32_t result = readCache(session.client(), printer.handle, cache);
  QvnClosePrinter(session.client(), printer.handle);
  if (result == QRN_ERROR_INVALID_FUNCTION && !isCpdPrinter(session, printer)) {
    throw Failure("cannot read the cache of " + printer.text() + ": " +
                  withCode("a Bpd printer has no status cache", result));
  }
  requireOf(session, printer, result, "cannot read the cache of " + printer.text());
  if (raw) {
    std::cout << formatHex(cache, " ") << '\n';
    return;
  }
  Json entries = Json::array();
  for (const alerts::CacheEntry& entry : alerts::cacheEntries(cache)) {
    entries.push_back(
        {{"entry", entry.id}, {"bytes", formatHex(entry.bytes, " ")}, {"meaning", meaning(entry)}});
  }
  printListing(entries, {"entry", "bytes", "meaning"}, json);
}

}  // namespace

void addCacheCommand(Verb& root) {
  struct Options {
    std::string device;
    bool json = false;
    bool raw = false;
  };
  const auto options = std::make_shared<Options>();
  Verb verb = root.addVerb("cache", "Read and decode a printer's status cache");
  verb.addDevice(options->device, "printer");
  const Option json = verb.addJson(options->json);
  verb.addFlag("--raw", options->raw, "Print the bytes as they are, in hexadecimal").excludes(json);
  verb.footer("Examples:\n  qvn cache\n  qvn cache --device LAB1 --json");
  verb.callback([options] { showCache(options->device, options->json, options->raw); });
}

}  // namespace qvn::cli
