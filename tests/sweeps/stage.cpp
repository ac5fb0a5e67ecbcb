#include "sweeps/stage.h"

#include <algorithm>
#include <cstdio>
#include <thread>

#include "device/store/hid_store.h"
#include "device/store/printer_store.h"
#include "device/store/scanner_store.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "support/store_documents.h"

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

void hear(const std::string& what, std::uint32_t clientId) {
  Stage& stage = *current;
  stage.note(what + " by " + std::to_string(clientId));
  if (stage.onHeard) stage.onHeard(what, clientId);
}

}  // namespace

const Kind& kindOf(std::uint32_t handle) {
  static const Kind printer{QvnOpenPrinter, QvnClosePrinter, QvnDeletePrinter};
  static const Kind scanner{QvnOpenScanner, QvnCloseScanner, QvnDeleteScanner};
  static const Kind hid{QvnOpenHid, QvnCloseHid, QvnDeleteHid};
  return isPrinter(handle) ? printer : isHid(handle) ? hid : scanner;
}

Stage::Stage() {
  current = this;
  FakeTransport::registerModule();
  fake.onExchange = [this](const Data& request) {
    return request.getBuffer()[0] == '<' ? answer(asText(request)) : reply(request);
  };
  fake.onWrite = [this](Data& data) {
    // The zeros with which a job is cancelled.
    if (data.getLength() == kCancelZeros) fake.deliver(kCancelled, FakeTransport::visited());
    data.setRc(failsWrites ? kFailure : QRN_ERROR_SUCCESS);
    data.setCount(failsWrites ? 0 : data.getLength());
  };
  fake.onVisitor = [this](const std::string& visitor, Data* data) { return visit(visitor, data); };
  fake.onDiscover = [](const std::string&) { return std::vector{FakeTransport::printerText(kPrinter)}; };
}

Stage::~Stage() { fake.reset(); }

void Stage::store(const std::vector<std::uint32_t>& handles) {
  for (const std::uint32_t handle : handles) {
    const char* const kind = isPrinter(handle) ? "Printer" : isHid(handle) ? "Hid" : "Scanner";
    std::string text = FakeTransport::deviceText((isBpd(handle) ? "Bpd" : "Cpd") + std::string(kind), handle,
                                                 "PORT" + std::to_string(handle));
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

std::string Stage::transportModule() {
  std::string module;
  ApplicationSettings().getString(setting_key::kNetworkTransports, FakeTransport::kName, module,
                                  SettingsStore::kLocal);
  return module;
}

void Stage::note(const std::string& line) {
  const std::lock_guard guard(mutex_);
  lines_.push_back(line);
}

std::vector<std::string> Stage::take() {
  const std::lock_guard guard(mutex_);
  return std::exchange(lines_, {});
}

bool Stage::await(const std::string& prefix) {
  // Computing meanwhile keeps the clock from skipping a wait that is about to end.
  while (true) {
    {
      const std::lock_guard guard(mutex_);
      for (const std::string& line : lines_) {
        if (line.starts_with(prefix)) return true;
        if (line.starts_with("scan 4000 Scanner.CommError")) return false;
      }
    }
    std::this_thread::yield();
  }
}

void Stage::listen(std::uint32_t clientId, std::uint32_t handle) {
  if (isPrinter(handle)) {
    if (handle != kPlainPrinter) {
      did("register alerts", QvnRegisterForAlertsPrinter(clientId, handle, kPanelAlerts, heard::alert));
    }
    did("register notifications",
        QvnRegisterForNotificationsPrinter(clientId, handle, 1, heard::notification));
  } else if (isHid(handle)) {
    did("register reports", QvnRegisterForReportsHid(clientId, handle, heard::report));
    did("register events", QvnRegisterForNotificationsHid(clientId, handle, heard::notification));
  } else {
    did("register data", QvnRegisterForAsyncDataScanner(clientId, handle, 0x7000, heard::scan));
  }
}

void Stage::unlisten(std::uint32_t clientId, std::uint32_t handle) {
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

std::uint32_t Stage::tell(std::uint32_t handle, const std::string& block) {
  return fake.deliver(Data(block), handle);
}

std::uint32_t Stage::tellState(std::uint32_t handle, const std::string& state) {
  return tell(handle, notification(std::to_string(handle) + "_Observer", "Job_1", "stateChanged",
                                   entries("ScanJob", "state", state)));
}

void Stage::tellEvent(std::uint32_t handle, std::uint32_t id) {
  Notification event;
  event.category = 2;
  event.id = id;
  fake.deliver(event, handle);
}

std::optional<Data> Stage::reply(const Data& request) {
  const std::uint8_t* const packet = request.getBuffer();
  if (packet[0] == 0x1B) {
    return packet[2] == 'V' ? bytes({0x1B, 's', 'v', 2, 0, 0, 0, 0, 'o', 'k'}) : kScanStatus;
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
  if (what == "callMethod Job_1 start") note("started");
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
  hear((category == 2 ? "event " : "notification ") + std::to_string(id), clientId);
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
