// qvn status: whether printers answer, their state and their status cache.
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "qvn/transport/attributes.h"
#include "shared/alerts/alert_words.h"
#include "shared/client/devices.h"
#include "shared/client/failure.h"
#include "shared/client/status_cache.h"
#include "shared/client/text_values.h"
#include "verbs/commands.h"
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

// Opens the printer to see whether it answers.
Json statusOf(const Session& session, const Device& printer) {
  Json status = {{"handle", printer.handle}, {"portname", readText(session, printer, attribute::kPortname)},
                 {"answers", false},         {"state", nullptr},
                 {"cache", nullptr},         {"problem", nullptr}};
  const std::uint32_t opened = QvnOpenPrinter(session.client(), printer.handle);
  if (opened != QRN_ERROR_SUCCESS) {
    status["problem"] = describeResult(opened);
    return status;
  }
  status["answers"] = true;
  std::uint32_t state = 0;
  if (QvnGetCurrentStatePrinter(session.client(), printer.handle, &state) == QRN_ERROR_SUCCESS) {
    status["state"] = stateName(state);
  }
  std::vector<std::uint8_t> cache;
  if (readCache(session.client(), printer.handle, cache) == QRN_ERROR_SUCCESS) {
    status["cache"] = Json::object();
    for (const alerts::CacheEntry& entry : alerts::cacheEntries(cache)) {
      status["cache"][std::to_string(entry.id)] = formatHex(entry.bytes, " ");
    }
  }
  QvnClosePrinter(session.client(), printer.handle);
  return status;
}

// The cache on one line: "17=00 18=00 2A".
std::string cacheText(const Json& cache) {
  std::string text;
  for (const auto& [id, bytes] : cache.items()) {
    text += (text.empty() ? "" : "  ") + id + "=" + cell(bytes);
  }
  return text.empty() ? "-" : text;
}

void status(const std::string& name, bool json) {
  const Session session;
  const std::vector<Device> printers = name.empty()
                                           ? listDevices(session, deviceKinds().front(), "ALL_TRANSPORT")
                                           : std::vector<Device>{selectPrinter(session, name)};
  Json all = Json::array();
  bool everyOneAnswers = true;
  for (const Device& printer : printers) {
    all.push_back(statusOf(session, printer));
    everyOneAnswers = everyOneAnswers && all.back()["answers"].get<bool>();
  }
  if (json) {
    printJson(all);
  } else {
    for (Json& one : all) {
      one["answers"] = one["answers"].get<bool>() ? "yes" : "no";
      one["cache"] = one["cache"].is_null() ? Json() : Json(cacheText(one["cache"]));
    }
    printListing(all, {"handle", "portname", "answers", "state", "cache", "problem"}, false);
  }
  if (!everyOneAnswers) {
    std::cout.flush();
    throw Failure("not every printer answers");
  }
}

}  // namespace

void addStatusCommand(Verb& root) {
  struct Options {
    std::string device;
    bool json = false;
  };
  const auto options = std::make_shared<Options>();
  Verb verb = root.addVerb("status", "Ask printers whether they answer and what they report");
  verb.addOption("--device", options->device, "A printer's handle or port name; without it all of them");
  verb.addFlag("--json", options->json, "Print JSON");
  verb.footer("Examples:\n  qvn status\n  qvn status --device LAB1 --json");
  verb.callback([options] { status(options->device, options->json); });
}

}  // namespace qvn::cli
