// qvn store: the objects in a Bpd scanner.
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "shared/client/devices.h"
#include "shared/client/failure.h"
#include "shared/client/interrupt.h"
#include "shared/object-store/element_json.h"
#include "shared/object-store/store_channel.h"
#include "verbs/commands.h"
#include "verbs/verb.h"
#include "watch/event_queue.h"

namespace qvn::cli {

namespace {

using object_store::StoreChannel;
using object_store::StoreError;
using object_store::StoreEvent;

struct CallOptions {
  std::string device;
  std::string object;
  std::string method;
  std::string params;
  bool hostMode = false;
};

struct WatchOptions {
  std::string device;
  std::vector<std::string> observed;
  std::size_t count = 0;
};

// The library looks the scanner up, and is gone again before the channel opens it.
std::uint32_t selectScanner(const std::string& name) {
  const Session session;
  return selectNamed(session, kindNamed("scanner"), name).handle;
}

// What may stand in a document; anything else is the person's mistake.
template <typename Check>
auto checked(Check&& check) {
  try {
    return check();
  } catch (const std::exception& error) {
    throw UsageError(error.what());
  }
}

std::unique_ptr<Element> parseParams(const std::string& text) {
  if (text.empty()) return nullptr;
  return checked([&] { return object_store::parseElement(text); });
}

std::string plain(const std::string& text) {
  return checked([&] { return object_store::requirePlain(text); });
}

// Runs what talks to the device.
template <typename Talk>
void talk(Talk&& run) {
  try {
    run();
  } catch (const StoreError& error) {
    if (error.code() != QRN_ERROR_SUCCESS) throw Failure(error.what(), error.code());
    throw Failure(error.what());
  }
}

void call(const CallOptions& options) {
  const std::string object = plain(options.object);
  const std::string method = plain(options.method);
  const auto params = parseParams(options.params);
  const std::uint32_t handle = selectScanner(options.device);
  talk([&] {
    StoreChannel store(handle);
    if (options.hostMode) store.enterHostMode();
    const auto result = store.call(object, method, params.get());
    printJson(result == nullptr ? Json() : object_store::toJson(*result));
  });
}

Json describe(const StoreEvent& event) {
  Json described = {{"time", timeOfEvent()}};
  if (!event.tag.empty()) {
    described["block"] = event.tag;
    return described;
  }
  described["observer"] = event.observer;
  described["object"] = event.object;
  described["event"] = event.event;
  described["data"] = event.data == nullptr ? Json() : object_store::toJson(*event.data);
  return described;
}

void watch(const WatchOptions& options) {
  if (options.observed.size() % 2 != 0) throw UsageError("an object and its event belong together");
  for (const std::string& text : options.observed) plain(text);
  Interrupt::install();
  const std::uint32_t handle = selectScanner(options.device);
  // Outlives the channel, whose thread adds to it.
  EventQueue events;
  talk([&] {
    StoreChannel store(handle, [&](const StoreEvent& event) { events.add(describe(event)); });
    for (std::size_t i = 0; i < options.observed.size(); i += 2) {
      store.observe(options.observed[i], options.observed[i + 1]);
    }
    std::cerr << "watching scanner " << handle << '\n';
    events.print(options.count, [](const Json& event) { printJsonLine(event); });
  });
}

}  // namespace

void addStoreCommand(Verb& root) {
  Verb verb = root.addVerb("store", "Speak to the objects in a Bpd scanner");
  verb.requireVerb();
  verb.footer(
      "For people who debug devices; 'qvn scan' takes pages. Of JSON a whole number is an IntegerElem, "
      "another\n"
      "one a DoubleElem, {\"base64\": \"...\"} a BinaryElem, an object a MapElem, an array a ListElem.\n\n"
      "Examples:\n"
      "  qvn store call system exitHostUSBSendMode\n"
      "  qvn store watch system systemUpdate");

  const auto callOptions = std::make_shared<CallOptions>();
  Verb callVerb = verb.addVerb("call", "Call a method of an object and print its result as JSON");
  callVerb.addOption("OBJECT", callOptions->object, "The object's name").required();
  callVerb.addOption("METHOD", callOptions->method, "The method's name").required();
  callVerb.addOption("PARAMS", callOptions->params, "Its parameters as JSON; otherwise an empty list");
  callVerb.addDevice(callOptions->device, "scanner");
  callVerb.addFlag("--host-mode", callOptions->hostMode, "Be in host mode meanwhile, as jobs need");
  callVerb.footer(
      "Examples:\n"
      "  qvn store call system exitHostUSBSendMode\n"
      "  qvn store call --host-mode jobFactory create '[\"HostSendJob\", {\n"
      "    \"scanParameters\": {\"resolution\": 300, \"scanWindow\": {\"topLeft\": {}, \"bottomRight\": "
      "{}}},\n"
      "    \"documentParameters\": {}, \"usbParameters\": {}}]'");
  callVerb.callback([callOptions] { call(*callOptions); });

  const auto watchOptions = std::make_shared<WatchOptions>();
  Verb watchVerb = verb.addVerb("watch", "Print what the scanner sends, a line of JSON each, until Ctrl-C");
  watchVerb.addOption("OBSERVED", watchOptions->observed,
                      "Objects to observe, each followed by an event of it");
  watchVerb.addDevice(watchOptions->device, "scanner");
  watchVerb.addOption("-n,--count", watchOptions->count, "End after so many lines");
  watchVerb.footer(
      "Example:\n"
      "  qvn store watch system systemUpdate");
  watchVerb.callback([watchOptions] { watch(*watchOptions); });
}

}  // namespace qvn::cli
