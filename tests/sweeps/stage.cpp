#include "sweeps/stage.h"

#include <stdlib.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <sstream>
#include <thread>

#include "device/store/hid_store.h"
#include "device/store/printer_store.h"
#include "device/store/scanner_store.h"
#include "platform/base/clock.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "support/store_documents.h"
#include "sweeps/call_table.h"

namespace qvn::test {
namespace {

std::atomic<Stage*> current{nullptr};

constexpr std::uint32_t kCancelZeros = 4096;
const Data kCancelled = bytes({0xA5, 0, 9, 0, 0xF0, 0x73, 1, 1, 8, 1, 8, 0});

// The default model.
constexpr std::uint32_t kVid = 0x43D, kPid = 0x101;

bool isPrinter(std::uint32_t handle) { return handle < kScanner; }
bool isHid(std::uint32_t handle) { return handle >= kHid; }
bool isScanner(std::uint32_t handle) { return !isPrinter(handle) && !isHid(handle); }
bool isBpd(std::uint32_t handle) { return handle % 10 > 7; }

std::uint32_t tell(std::uint32_t handle, const std::string& block) {
  return FakeTransport::instance().deliver(Data(block), handle);
}
std::uint32_t tellState(std::uint32_t handle, const std::string& state) {
  return tell(handle, notification(std::to_string(handle) + "_Observer", "Job_1", "stateChanged",
                                   entries("ScanJob", "state", state)));
}
std::uint32_t tellEvent(std::uint32_t handle) {
  static std::atomic<std::uint32_t> latest{0};
  Notification event;
  event.category = 2;
  event.id = ++latest;
  FakeTransport::instance().deliver(event, handle);
  return QRN_ERROR_SUCCESS;
}

std::optional<Data> reply(const Data& request) {
  const std::uint8_t* const packet = request.getBuffer();
  if (packet[0] == 0x1B) {
    return packet[2] == 'V' ? bytes({0x1B, 's', 'v', 2, 0, 0, 0, 0, 'o', 'k'})
                            : bytes({0x1B, 'S', 'S', 0, 0, 0, 0, 0});
  }
  const int command = packet[4];
  const int sub = request.getLength() > 5 ? packet[5] : 0;
  Data reply = bytes({0xA5, 0, 6, 0, command, sub, 0, 0, 5});
  if (command == 5 && sub == 2) reply.append(Data(17, 0));  // the job is over
  if (command == 1) reply.append(Data(23, 0));
  if (command == 0xE0 && sub == 0x81) {
    reply = bytes({0xA5, 0, 20, 0, 0xE0, 0x81, 0, 0xF0, 0, 0, 0, 0, 0, 0, 0, 0, 17, 1, 5, 0, 18, 2, 6, 7});
  }
  reply.getBuffer()[2] = static_cast<std::uint8_t>(reply.getLength() - 3);
  return reply;
}

// What the words do that are no exported functions. They get the result of the word before, which those give
// that have none of their own.
using Rc = std::uint32_t;
using Act = std::function<Rc(Stage&, std::uint32_t handle, Rc rc)>;
Act telling(const std::string& block) {
  return [=](Stage&, std::uint32_t handle, Rc) { return tell(handle, block); };
}
const std::string kScanData("\x1Bsd\1\0\0\0\0x", 9);
const std::map<std::string, Act> acts = {
    {"alert", telling({"\xA5\0\5\0\xF0\xE1\0\0", 8})},
    {"data", [](Stage&, auto h, Rc) { return tell(h, isBpd(h) ? "<Scan.Data>dots" : kScanData); }},
    {"status", telling({"\x1BSS\0\0\0\0\0", 8})},
    {"ring", telling("<Ring>")},
    {"scanning", [](Stage&, auto h, Rc) { return tellState(h, "Scanning"); }},
    {"complete", [](Stage&, auto h, Rc) { return tellState(h, "Complete"); }},
    {"jobEnd", telling("<Job.End>")},
    {"report", telling("key")},
    {"event", [](Stage&, auto h, Rc) { return tellEvent(h); }},
    {"lost", [](Stage& stage, auto h, Rc rc) { return stage.fake.loseConnection(h), rc; }},
    {"cancel",
     [](Stage&, auto h, Rc rc) {
       std::thread([&] { rc = QvnCancelJobPrinter(2, h); }).join();
       return rc;
     }},
    // Settings and what the devices do.
    {"buffered", [](Stage& stage, auto, Rc rc) { return stage.set("CpdPrinterMwo", 1), rc; }},
    {"failing", [](Stage& stage, auto, Rc rc) { return stage.failsWrites = true, rc; }},
    {"taking", [](Stage& stage, auto, Rc rc) { return stage.failsWrites = false, rc; }},
    {"channel", [](Stage& stage, auto, Rc rc) { return stage.hasCacheChannel = true, rc; }},
    {"jobless", [](Stage& stage, auto, Rc rc) { return stage.failsJobs = true, rc; }},
    // A Bpd scanner's job has been started, or cannot be. Computing meanwhile keeps the clock from skipping a
    // wait that is about to end.
    {"started",
     [](Stage& stage, auto, Rc rc) {
       while (rc == 0 && stage.count("started by") + stage.count("scan 4000 Scanner.CommError") == 0) {
         std::this_thread::yield();
       }
       return rc;
     }},
    // A callback that comes when another thread has waited for long enough.
    {"inside",
     [](Stage& stage, auto, Rc rc) {
       while (stage.count("inside") == 0) platform::sleep(1000);
       return rc;
     }},
    // The local transports are searched for what is not stored.
    {"lookUps",
     [](Stage&, auto, Rc rc) {
       ApplicationSettings().setString(setting_key::kLocalTransports, FakeTransport::kName,
                                       FakeTransport::module(), SettingsStore::kLocal);
       for (const auto lookUp : {QvnEnumSpecificPrinter, QvnEnumSpecificScanner, QvnEnumSpecificHid}) {
         std::uint32_t handle = 0;
         rc = rc * 10 + lookUp(1, "UNKNOWN", &handle);
       }
       return rc;
     }},
};

void hear(const std::string& what, std::uint32_t clientId) {
  Stage& stage = *current;
  stage.note(what + " by " + std::to_string(clientId));
  if (stage.onHeard) stage.onHeard(what, clientId);
}

}  // namespace

const Kind& kindOf(std::uint32_t handle) {
  static const Kind printer{"Printer", QvnOpenPrinter, QvnClosePrinter, QvnDeletePrinter};
  static const Kind scanner{"Scanner", QvnOpenScanner, QvnCloseScanner, QvnDeleteScanner};
  static const Kind hid{"Hid", QvnOpenHid, QvnCloseHid, QvnDeleteHid};
  return isPrinter(handle) ? printer : isHid(handle) ? hid : scanner;
}

Stage::Stage() {
  current = this;
  // Before anything loads libcups, which stays.
  setenv("QVN_TRANSPORT_PATH", FAKE_CUPS_DIRECTORY, 1);
  setenv("QVN_FAKE_CUPS", "Lab qvn://PORT407\nOffice qvn://PORT408\n", 1);
  FakeTransport::registerModule();
  fake.onExchange = [this](const Data& request) {
    return request.getBuffer()[0] == '<' ? answer(asText(request)) : reply(request);
  };
  fake.onWrite = [this](Data& data) {
    // The zeros with which a job is cancelled.
    if (data.getLength() == kCancelZeros) fake.deliver(kCancelled, FakeTransport::visited());
    const bool fails = failsWrites && FakeTransport::visited() == kPrinter;
    data.setRc(fails ? kFailure : QRN_ERROR_SUCCESS);
    data.setCount(fails ? 0 : data.getLength());
  };
  fake.onVisitor = [this](const std::string& visitor, Data* data) { return visit(visitor, data); };
  fake.onDiscover = [](const std::string&) { return std::vector{FakeTransport::printerText(kPrinter)}; };
}

Stage::~Stage() { fake.reset(); }

void Stage::store(const std::vector<std::uint32_t>& handles) {
  for (const std::uint32_t handle : handles) {
    const std::string family = isBpd(handle) ? "Bpd" : "Cpd";
    std::string text =
        FakeTransport::deviceText(family + kindOf(handle).name, handle, "PORT" + std::to_string(handle));
    AttributeCodec::setLong(text, attribute::kVid, kVid);
    AttributeCodec::setLong(text, attribute::kPid, kPid);
    if (isPrinter(handle)) PrinterStore::getInstance().persist(text);
    if (isScanner(handle)) ScannerStore::getInstance().persist(text);
    if (isHid(handle)) HidStore::getInstance().persist(text);
  }
  ApplicationSettings().setLong("Runtime\\", "DefaultModelId", kVid << 16 | kPid, SettingsStore::kLocal);
}

void Stage::set(const std::string& setting, std::uint32_t value) {
  ApplicationSettings().setLong(setting_key::kSettings, setting, value, SettingsStore::kLocal);
}

void Stage::note(const std::string& line) {
  const std::lock_guard guard(mutex_);
  lines_.push_back(line);
}

std::vector<std::string> Stage::take() {
  const std::lock_guard guard(mutex_);
  return std::exchange(lines_, {});
}

std::ptrdiff_t Stage::count(const std::string& beginning, const std::string& ending) {
  const std::lock_guard guard(mutex_);
  return std::ranges::count_if(
      lines_, [&](const std::string& line) { return line.starts_with(beginning) && line.ends_with(ending); });
}

std::uint32_t Stage::play(std::uint32_t handle, const std::string& words) {
  std::istringstream stream(words);
  std::uint32_t rc = QRN_ERROR_SUCCESS;
  for (std::string word; stream >> word;) {
    const auto act = acts.find(word);
    if (act != acts.end()) {
      rc = act->second(*this, handle, rc);
    } else {
      const std::string name = handle == 0 ? word : word + kindOf(handle).name;
      rc = std::ranges::find(exportedCalls(), name, &ExportedCall::name)->call(handle);
    }
    note(word + " " + std::to_string(rc));
  }
  return rc;
}

void Stage::listen(std::uint32_t clientId, std::uint32_t handle) {
  if (isPrinter(handle)) {
    QvnRegisterForAlertsPrinter(clientId, handle, kPanelAlerts, heard::alert);
    QvnRegisterForNotificationsPrinter(clientId, handle, 1, heard::notification);
  } else if (isHid(handle)) {
    QvnRegisterForReportsHid(clientId, handle, heard::report);
    QvnRegisterForNotificationsHid(clientId, handle, heard::notification);
  } else {
    QvnRegisterForAsyncDataScanner(clientId, handle, 0x7000, heard::scan);
  }
}

void Stage::listenNoMore(std::uint32_t clientId, std::uint32_t handle) {
  if (isPrinter(handle)) {
    QvnUnregisterForAlertsPrinter(clientId, handle);
    QvnUnregisterForNotificationsPrinter(clientId, handle);
  } else if (isHid(handle)) {
    QvnUnregisterForReportsHid(clientId, handle);
    QvnUnregisterForNotificationsHid(clientId, handle);
  } else {
    QvnUnregisterForAsyncDataScanner(clientId, handle);
  }
}

std::optional<Data> Stage::answer(const std::string& document) {
  const std::string what = summary(document);
  const std::uint32_t handle = FakeTransport::visited();
  const std::uint32_t id = requestId(document);
  if (what == "callMethod system enterHostUSBSendMode") tell(handle, systemUpdate("Enter HostSend OK"));
  if (what == "callMethod system exitHostUSBSendMode") tell(handle, systemUpdate("HostSend Exited"));
  if (what == "callMethod Job_1 cancel") {
    tellState(handle, "Complete");
    tell(handle, "<Job.End>");
  }
  if (what == "callMethod jobFactory create") {
    return Data(failsJobs ? exception(id) : response(id, text("Job_1")));
  }
  if (what == "callMethod Job_1 start") note("started by its device");
  return Data(response(id, number(0)));
}

std::uint32_t Stage::visit(const std::string& visitor, Data* data) {
  if (visitor == visitor_name::kGetNpaMode) {
    const std::uint32_t mode = FakeTransport::visited() == kPlainPrinter ? 0 : 1;
    data->fill(&mode, sizeof mode);
  }
  if (visitor != visitor_name::kCache) return QRN_ERROR_SUCCESS;
  if (!hasCacheChannel) return QRN_ERROR_INVALID_FUNCTION;
  fake.deliver(*reply(bytes({0xA5, 0, 3, 0, 0xE0, 0x81})), FakeTransport::visited());
  return QRN_ERROR_SUCCESS;
}

namespace heard {

void device(std::uint32_t clientId, std::uint32_t handle) {
  hear("found " + std::to_string(handle), clientId);
}
void queue(std::uint32_t clientId, const char* printer, const char*) {
  hear(std::string("queue ") + printer, clientId);
}
void alert(std::uint32_t handle, const std::uint8_t*, std::uint32_t, std::uint32_t clientId) {
  hear("alert " + std::to_string(handle), clientId);
}
void notification(std::uint32_t, std::uint32_t category, std::uint32_t id, const std::uint8_t*, std::uint32_t,
                  std::uint32_t clientId) {
  hear(category == 2 ? "event" : "notification " + std::to_string(id), clientId);
}
std::uint32_t scan(std::uint32_t clientId, std::uint32_t, std::uint32_t handle, std::uint32_t event,
                   const std::uint8_t* data, std::uint32_t length) {
  char kind[16];
  std::snprintf(kind, sizeof kind, "scan %X ", event);
  hear(isBpd(handle) ? kind + std::string(reinterpret_cast<const char*>(data), length) : "scan data",
       clientId);
  return 0;
}
void report(std::uint32_t clientId, std::uint32_t, const std::uint8_t*, std::uint32_t) {
  hear("report", clientId);
}

}  // namespace heard

}  // namespace qvn::test
