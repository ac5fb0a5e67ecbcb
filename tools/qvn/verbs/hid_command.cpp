// qvn hid: what HIDs send.
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "qvn/transport/attributes.h"
#include "shared/client/devices.h"
#include "shared/client/failure.h"
#include "shared/client/interrupt.h"
#include "shared/client/text_values.h"
#include "verbs/commands.h"
#include "verbs/verb.h"
#include "watch/event_queue.h"
#include "watch/hear_all.h"

namespace qvn::cli {

namespace {

// A client's callback has no argument to carry it, so there is one for the process.
EventQueue events;

void onReport(std::uint32_t, std::uint32_t handle, const std::uint8_t* report, std::uint32_t length) {
  const std::span bytes(report, length);
  Json event = {{"time", timeOfEvent()}, {"handle", handle}, {"event", "report"}};
  // A panel's report: 01 01 and the number of the button that is down.
  if (bytes.size() == 8 && bytes[0] == 1 && bytes[1] == 1) event["button"] = bytes[2];
  event["report"] = formatHex(bytes, " ");
  events.add(std::move(event));
}

void onNotification(std::uint32_t handle, std::uint32_t, std::uint32_t id, const std::uint8_t*, std::uint32_t,
                    std::uint32_t) {
  events.add({{"time", timeOfEvent()}, {"handle", handle}, {"event", "event"}, {"id", id}});
}

// A HID that is heard while this object lives.
class Watched {
 public:
  // Throws Failure when the HID cannot be heard.
  Watched(const Session& session, const Device& hid) : client_(session.client()), handle_(hid.handle) {
    openDevice(session, hid);
    const std::uint32_t result = QvnRegisterForReportsHid(client_, handle_, onReport);
    if (result != QRN_ERROR_SUCCESS) {
      QvnCloseHid(client_, handle_);
      throw Failure(hid.text() + " takes no registration for reports", result);
    }
    QvnRegisterForNotificationsHid(client_, handle_, onNotification);
  }
  ~Watched() {
    QvnUnregisterForNotificationsHid(client_, handle_);
    QvnUnregisterForReportsHid(client_, handle_);
    QvnCloseHid(client_, handle_);
  }
  // One more open makes a lost connection anew.
  std::uint32_t ask() const {
    const std::uint32_t result = QvnOpenHid(client_, handle_);
    if (result == QRN_ERROR_SUCCESS) QvnCloseHid(client_, handle_);
    return result;
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
};

void print(const Session& session, const Json& event, bool json) {
  if (json) {
    printJsonLine(event);
    return;
  }
  const Device hid{&kindNamed("hid"), event["handle"].get<std::uint32_t>()};
  std::cout << cell(event["time"]) << "  " << knownAs(session, hid) << "  ";
  if (event.contains("id")) {
    std::cout << "event  " << cell(event["id"]);
  } else {
    std::cout << "report  " << cell(event["report"]);
    if (event.contains("button")) std::cout << "  button " << cell(event["button"]);
  }
  std::cout << '\n';
}

void watch(const Options& options) {
  Interrupt::install();
  const Session session;
  AllHeard<Watched> heard(session, kindNamed("hid"), options.devices);
  events.print(
      options.count, [&](const Json& event) { print(session, event, options.json); },
      [&] { heard.askAll(); });
}

}  // namespace

void addHidCommand(Verb& root) {
  Verb verb = root.addVerb("hid", "Show what HIDs send");
  verb.requireVerb();
  verb.footer(
      "Examples:\n"
      "  qvn hid watch\n"
      "  qvn hid watch --device 40801 --json --count 1");

  const auto options = std::make_shared<Options>();
  Verb watchVerb = verb.addVerb("watch", "Show reports and events as they come, until Ctrl-C");
  watchVerb.addDevice(options->devices, "HID", "may be repeated; without it all that can be opened");
  watchVerb.addOption("-n,--count", options->count, "End after so many reports and events");
  watchVerb.addJson(options->json, "Print a line of JSON for each report and event");
  watchVerb.footer("Examples:\n  qvn hid watch\n  qvn hid watch --device 40801 --json --count 1");
  watchVerb.callback([options] { watch(*options); });
}

}  // namespace qvn::cli
