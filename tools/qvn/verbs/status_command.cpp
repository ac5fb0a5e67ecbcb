// qvn status: whether printers answer, their state and their status cache.
#include <algorithm>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "qvn/transport/attributes.h"
#include "shared/alerts/alert_words.h"
#include "shared/client/devices.h"
#include "shared/client/failure.h"
#include "shared/client/printer_questions.h"
#include "shared/client/text_values.h"
#include "verbs/commands.h"
#include "verbs/quiet.h"
#include "verbs/verb.h"

namespace qvn::cli {

namespace {

const char* stateName(std::uint32_t state) {
  switch (state) {
    case 1:
      return "printing";
    case 2:
      return "error";
    case 3:
      return "idle";
    default:
      return "unknown";
  }
}

struct Options {
  std::string device;
  bool json = false;
  bool raw = false;
};

// The reasons are the names that IPP has for what the words say (RFC 8011).
void addCache(Json& status, const std::vector<std::uint8_t>& cache, bool raw) {
  if (const auto decoded = alerts::decodeCache(cache)) {
    status["status"] = alerts::conditionWords(decoded->word);
    status["reasons"] = Json::array();
    for (const alerts::Condition* condition : alerts::conditionsIn(decoded->word)) {
      status["reasons"].push_back(condition->reason);
    }
  }
  if (!raw) return;
  status["cache"] = Json::object();
  for (const alerts::CacheEntry& entry : alerts::cacheEntries(cache)) {
    status["cache"][std::to_string(entry.id)] = formatHex(entry.bytes, " ");
  }
}

// What is asked of the open printer. "answers" stays null for one that has nothing to be asked by: it would
// take a print job to see whether it is there.
void askOpen(const Session& session, const Device& printer, Json& status, bool raw) {
  const std::uint32_t client = session.client();
  const std::uint32_t asked = askPrinter(client, printer.handle);
  if (asked == QRN_ERROR_INVALID_FUNCTION) return;
  status["answers"] = asked == QRN_ERROR_SUCCESS;
  if (asked != QRN_ERROR_SUCCESS) {
    status["problem"] = describeResult(asked, placeOf(session, printer));
    return;
  }
  std::uint32_t state = 0;
  if (QvnGetCurrentStatePrinter(client, printer.handle, &state) == QRN_ERROR_SUCCESS) {
    status["state"] = stateName(state);
  }
  std::vector<std::uint8_t> cache;
  if (readCache(client, printer.handle, cache) == QRN_ERROR_SUCCESS) addCache(status, cache, raw);
}

Json statusOf(const Session& session, const Device& printer, bool raw) {
  Json status = {{"handle", printer.handle}, {"portname", readText(session, printer, attribute::kPortname)},
                 {"answers", nullptr},       {"state", nullptr},
                 {"status", nullptr},        {"problem", nullptr}};
  const std::uint32_t opened = QvnOpenPrinter(session.client(), printer.handle);
  if (opened == QRN_ERROR_SUCCESS) {
    askOpen(session, printer, status, raw);
    QvnClosePrinter(session.client(), printer.handle);
  } else {
    status["answers"] = false;
    status["problem"] = describeResult(opened, placeOf(session, printer));
  }
  return status;
}

// The cache on one line: "17=00  18=00 2A".
std::string cacheText(const Json& cache) {
  std::string text;
  for (const auto& [id, bytes] : cache.items()) {
    text += (text.empty() ? "" : "  ") + id + "=" + cell(bytes);
  }
  return text.empty() ? "-" : text;
}

void status(const Options& options) {
  const Session session;
  const std::vector<Device> printers = options.device.empty()
                                           ? listDevices(session, deviceKinds().front(), "ALL_TRANSPORT")
                                           : std::vector<Device>{selectPrinter(session, options.device)};
  Json all = Json::array();
  for (const Device& printer : printers) all.push_back(statusOf(session, printer, options.raw));
  const bool oneIsSilent =
      std::any_of(all.begin(), all.end(), [](const Json& one) { return one["answers"] == false; });
  if (options.json) {
    printJson(all);
  } else {
    std::vector<std::string> columns = {"handle", "portname", "answers", "state", "status", "problem"};
    if (options.raw) columns.insert(columns.end() - 1, "cache");
    for (Json& one : all) {
      one["answers"] = one["answers"].is_null() ? "not asked" : one["answers"] == true ? "yes" : "no";
      if (one.contains("cache")) one["cache"] = cacheText(one["cache"]);
    }
    printListing(all, columns, false);
    if (all.empty()) hint("no printer is stored: 'qvn discover' finds some");
  }
  if (oneIsSilent) {
    std::cout.flush();
    throw Failure("not every printer answers");
  }
}

}  // namespace

void addStatusCommand(Verb& root) {
  const auto options = std::make_shared<Options>();
  Verb verb = root.addVerb("status", "Ask printers whether they answer and what they report");
  verb.addDevice(options->device, "printer", "without it all of them");
  verb.addJson(options->json);
  verb.addFlag("--raw", options->raw, "Show the bytes of the status cache as well, in hexadecimal");
  verb.footer(
      "A printer that takes print data and nothing else is not asked: only a job would show whether it is\n"
      "there.\n\n"
      "Examples:\n  qvn status\n  qvn status --device LAB1 --json");
  verb.callback([options] { status(*options); });
}

}  // namespace qvn::cli
