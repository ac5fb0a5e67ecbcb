// qvn watch: alerts and job notifications of printers as they come.
#include <array>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "qvn/transport/attributes.h"
#include "shared/alerts/alert_words.h"
#include "shared/client/devices.h"
#include "shared/client/failure.h"
#include "shared/client/interrupt.h"
#include "shared/client/open_printer.h"
#include "shared/client/printer_questions.h"
#include "shared/client/text_values.h"
#include "verbs/commands.h"
#include "verbs/verb.h"
#include "watch/event_queue.h"
#include "watch/hear_all.h"

namespace qvn::cli {

namespace {

constexpr std::uint32_t kEveryAlert = 0x3FFFFFF;

constexpr std::array kJobWords = {"busy printing",
                                  "error",
                                  "idle",
                                  "a job is starting",
                                  "the first data of the job has been written",
                                  "the job is ending",
                                  "the job was cancelled",
                                  "the job has been printed"};

// A client's callback has no argument to carry it, so there is one for the process.
EventQueue events;

void onAlert(std::uint32_t handle, const std::uint8_t* bytes, std::uint32_t length, std::uint32_t) {
  const alerts::Alert alert = alerts::decodeAlert({bytes, length});
  Json event = {{"time", timeOfEvent()}, {"handle", handle}, {"event", "alert"}, {"words", alert.words}};
  if (alert.status) {
    event["busy"] = alert.status->busy;
    event["reasons"] = Json::array();
    for (const alerts::Condition* condition : alerts::conditionsIn(alert.status->word)) {
      event["reasons"].push_back(condition->reason);
    }
  }
  event["packet"] = formatHex(std::span(bytes, length), " ");
  events.add(std::move(event));
}

void onNotification(std::uint32_t handle, std::uint32_t category, std::uint32_t id, const std::uint8_t*,
                    std::uint32_t, std::uint32_t) {
  const bool known = category == kPrinterJob && id >= 1 && id <= kJobWords.size();
  events.add({{"time", timeOfEvent()},
              {"handle", handle},
              {"event", "job"},
              {"words", known ? kJobWords[id - 1] : "category " + std::to_string(category)},
              {"id", id}});
}

// A printer that is heard while this object lives.
class Watched {
 public:
  // Throws Failure when the printer cannot be heard.
  Watched(const Session& session, const Device& printer)
      : client_(session.client()), handle_(printer.handle) {
    openDevice(session, printer);
    const std::uint32_t result = QvnRegisterForAlertsPrinter(client_, handle_, kEveryAlert, onAlert);
    if (result != QRN_ERROR_SUCCESS) {
      QvnClosePrinter(client_, handle_);
      throw Failure(printer.text() + " takes no registration for alerts", result);
    }
    QvnRegisterForNotificationsPrinter(client_, handle_, kPrinterJob, onNotification);
  }
  ~Watched() {
    QvnUnregisterForNotificationsPrinter(client_, handle_);
    QvnUnregisterForAlertsPrinter(client_, handle_);
    QvnClosePrinter(client_, handle_);
  }
  // The packet makes a lost connection anew, the registration for alerts with it.
  std::uint32_t ask() const { return askPrinter(client_, handle_); }

  Watched(const Watched&) = delete;
  Watched& operator=(const Watched&) = delete;

 private:
  std::uint32_t client_;
  std::uint32_t handle_;
};

struct Options {
  std::vector<std::string> devices;
  std::size_t count = 0;
  bool json = false;
  bool raw = false;
};

void print(const Session& session, Json event, const Options& options) {
  if (!options.raw) {
    event.erase("packet");
  }
  if (options.json) {
    printJsonLine(event);
    return;
  }
  const Device printer{&deviceKinds().front(), event["handle"].get<std::uint32_t>()};
  std::cout << cell(event["time"]) << "  " << knownAs(session, printer) << "  " << cell(event["event"])
            << "  " << cell(event["words"]);
  if (event.contains("packet")) {
    std::cout << "  " << cell(event["packet"]);
  }
  std::cout << '\n';
}

void watch(const Options& options) {
  Interrupt::install();
  const Session session;
  AllHeard<Watched> heard(session, deviceKinds().front(), options.devices);
  events.print(
      options.count, [&](const Json& event) { print(session, event, options); }, [&] { heard.askAll(); });
}

}  // namespace

void addWatchCommand(Verb& root) {
  const auto options = std::make_shared<Options>();
  Verb verb = root.addVerb("watch", "Show printers' alerts and job notifications as they come");
  verb.addDevice(options->devices, "printer", "may be repeated; without it all that can be opened");
  verb.addOption("-n,--count", options->count, "End after so many events");
  verb.addJson(options->json, "Print a line of JSON for each event");
  verb.addFlag("--raw", options->raw, "Print each alert's packet as well, in hexadecimal");
  verb.footer(
      "Ends on Ctrl-C. A printer that was off is watched again once it is back. Jobs of other programs show "
      "in the printer's own status alerts.\n\n"
      "Examples:\n"
      "  qvn watch\n"
      "  qvn watch --device LAB1 --json --count 1");
  verb.callback([options] { watch(*options); });
}

}  // namespace qvn::cli
