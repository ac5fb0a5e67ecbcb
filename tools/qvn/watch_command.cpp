// qvn watch: alerts and job notifications of printers as they come.
#include <CLI/CLI.hpp>
#include <array>
#include <chrono>
#include <condition_variable>
#include <ctime>
#include <deque>
#include <iostream>
#include <memory>
#include <mutex>
#include <utility>

#include "alert_words.h"
#include "commands.h"
#include "devices.h"
#include "failure.h"
#include "interrupt.h"
#include "open_printer.h"
#include "qvn/transport/attributes.h"
#include "text_values.h"

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

// Events that have come and are not printed yet. A client's callback has no argument to carry it, so there is
// one for the process.
class Events {
 public:
  void add(Json event) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (waiting_.size() < kMost) {
      waiting_.push_back(std::move(event));
    } else {
      lost_ = true;
    }
    changed_.notify_one();
  }
  void stop() {
    const std::lock_guard<std::mutex> lock(mutex_);
    stopped_ = true;
    changed_.notify_one();
  }
  // The next event; none when it was stopped.
  std::optional<Json> next() {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [this] { return stopped_ || !waiting_.empty(); });
    if (waiting_.empty()) {
      return std::nullopt;
    }
    if (waiting_.size() == 1 && std::exchange(lost_, false)) {
      std::cerr << "qvn: events were lost, they came faster than they could be printed\n";
    }
    Json event = std::move(waiting_.front());
    waiting_.pop_front();
    return event;
  }

 private:
  // A reader who stopped reading must not let the memory grow.
  static constexpr std::size_t kMost = 10000;

  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Json> waiting_;
  bool lost_ = false;
  bool stopped_ = false;
};

Events events;

// UTC with milliseconds, as RFC 3339 writes it.
std::string now() {
  const auto time = std::chrono::system_clock::now();
  const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
  const auto milliseconds =
      std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count() % 1000;
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  char text[32];
  const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
  std::snprintf(text + length, sizeof text - length, ".%03dZ", static_cast<int>(milliseconds));
  return text;
}

void onAlert(std::uint32_t handle, const std::uint8_t* bytes, std::uint32_t length, std::uint32_t) {
  const alerts::Alert alert = alerts::decodeAlert({bytes, length});
  Json event = {{"time", now()}, {"handle", handle}, {"event", "alert"}, {"words", alert.words}};
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
  events.add({{"time", now()},
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
    require(QvnOpenPrinter(client_, handle_), "cannot open " + printer.text());
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

std::vector<Device> selectPrinters(const Session& session, const std::vector<std::string>& names) {
  if (names.empty()) {
    return listDevices(session, deviceKinds().front(), "ALL_TRANSPORT");
  }
  std::vector<Device> printers;
  printers.reserve(names.size());
  for (const std::string& name : names) {
    printers.push_back(selectPrinter(session, name));
  }
  return printers;
}

// All printers that were named; of all that are stored those that can be heard.
std::vector<std::unique_ptr<Watched>> hear(const Session& session, const Options& options) {
  std::vector<std::unique_ptr<Watched>> watched;
  for (const Device& printer : selectPrinters(session, options.devices)) {
    try {
      watched.push_back(std::make_unique<Watched>(session, printer));
    } catch (const Failure& failure) {
      if (!options.devices.empty()) {
        throw;
      }
      std::cerr << "qvn: " << failure.what() << '\n';
    }
  }
  if (watched.empty()) {
    throw Failure("there is no printer to watch");
  }
  return watched;
}

void print(const Session& session, Json event, const Options& options) {
  if (!options.raw) {
    event.erase("packet");
  }
  if (options.json) {
    std::cout << event.dump(-1, ' ', false, Json::error_handler_t::replace) << '\n' << std::flush;
    return;
  }
  const Device printer{&deviceKinds().front(), event["handle"].get<std::uint32_t>()};
  const std::string port = readText(session, printer, attribute::kPortname);
  std::cout << cell(event["time"]) << "  " << (port.empty() ? printer.text() : port) << "  "
            << cell(event["event"]) << "  " << cell(event["words"]);
  if (event.contains("packet")) {
    std::cout << "  " << cell(event["packet"]);
  }
  std::cout << '\n' << std::flush;
}

void watch(const Options& options) {
  Interrupt::install();
  const Session session;
  const auto watched = hear(session, options);
  std::cerr << "watching " << watched.size() << (watched.size() == 1 ? " printer\n" : " printers\n");
  OnInterrupt onInterrupt([] { events.stop(); });
  for (std::size_t printed = 0; options.count == 0 || printed < options.count; ++printed) {
    const auto event = events.next();
    if (!event) {
      throw Interrupted("stopped watching");
    }
    print(session, *event, options);
    if (!std::cout) {
      return;
    }
  }
}

}  // namespace

void addWatchCommand(CLI::App& app) {
  const auto options = std::make_shared<Options>();
  CLI::App* verb = app.add_subcommand("watch", "Show printers' alerts and job notifications as they come");
  verb->add_option("--device", options->devices,
                   "A printer's handle or port name, may be repeated; without it all that can be opened");
  verb->add_option("--count", options->count, "End after so many events");
  verb->add_flag("--json", options->json, "Print a line of JSON for each event");
  verb->add_flag("--raw", options->raw, "Print each alert's packet as well, in hexadecimal");
  verb->footer(
      "Ends on Ctrl-C. Jobs of other programs show in the printer's own status alerts.\n\n"
      "Examples:\n"
      "  qvn watch\n"
      "  qvn watch --device LAB1 --json --count 1");
  verb->callback([options] { watch(*options); });
}

}  // namespace qvn::cli
