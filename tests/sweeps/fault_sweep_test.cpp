// Every call to a transport fails once, in every way it can, in the middle of everything that clients do:
// nothing crashes, hangs or stays behind, and afterwards the same can be done as if nothing had happened.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <thread>

#include "common/exception.h"
#include "qvn/transport/attributes.h"
#include "support/manual_clock.h"
#include "sweeps/case_watch.h"
#include "sweeps/stage.h"

namespace qvn::test {
namespace {

// What a client does with its devices, from beginning to end. It goes on when something fails and closes what
// it has opened.
struct Use {
  const char* name;
  std::vector<std::uint32_t> devices;
  std::function<void(Stage&)> play;

  friend void PrintTo(const Use& use, std::ostream* out) { *out << use.name; }
};

// Opened for the time of the scope.
class Opened {
 public:
  Opened(Stage& stage, std::uint32_t handle, std::uint32_t clientId = 1)
      : stage_(stage), handle_(handle), clientId_(clientId) {
    isOpen_ = stage_.did("open", kindOf(handle_).open(clientId_, handle_)) == 0;
  }
  ~Opened() {
    if (isOpen_) stage_.did("close", kindOf(handle_).close(clientId_, handle_));
  }
  Opened(const Opened&) = delete;
  Opened& operator=(const Opened&) = delete;

 private:
  Stage& stage_;
  std::uint32_t handle_;
  std::uint32_t clientId_;
  bool isOpen_ = false;
};

void start(Stage& stage, std::uint32_t handle) {
  stage.did("start", QvnStartJobPrinter(1, handle, 1, "queue", "host", "job", "user"));
}
void write(Stage& stage, std::uint32_t handle, const std::string& text) {
  std::uint32_t rc = 122;
  std::uint32_t written = 0;
  for (int attempt = 0; rc == 122 && attempt < 50; ++attempt) {
    rc = QvnWritePrinter(1, handle, reinterpret_cast<const std::uint8_t*>(text.data()),
                         static_cast<std::uint32_t>(text.size()), &written);
  }
  stage.did("write " + std::to_string(written), rc);
}
void end(Stage& stage, std::uint32_t handle) { stage.did("end", QvnEndJobPrinter(1, handle)); }

void openTwice(Stage& stage, std::uint32_t handle) {
  const Opened first(stage, handle);
  const Opened second(stage, handle, 2);
}

void print(Stage& stage, std::uint32_t handle, int buffers) {
  start(stage, handle);
  for (int i = 0; i < buffers; ++i) write(stage, handle, "data");
  write(stage, handle, kEndOfJob);
  end(stage, handle);
}

void directJob(Stage& stage) {
  const Opened printer(stage, kPrinter);
  print(stage, kPrinter, 1);
}
void bufferedJob(Stage& stage) {
  Stage::set("CpdPrinterMwo", 1);
  const Opened printer(stage, kPrinter);
  print(stage, kPrinter, 7);
}
void cancelledJob(Stage& stage) {
  const Opened printer(stage, kPrinter);
  start(stage, kPrinter);
  write(stage, kPrinter, "data");
  std::thread([&] { stage.did("cancel", QvnCancelJobPrinter(2, kPrinter)); }).join();
  write(stage, kPrinter, "more");
  end(stage, kPrinter);
}
// A client that closes in the middle of its job.
void abandonedJob(Stage& stage) {
  const Opened printer(stage, kPrinter);
  start(stage, kPrinter);
  write(stage, kPrinter, "data");
}
void bpdJob(Stage& stage) {
  const Opened printer(stage, kBpdPrinter);
  stage.listen(1, kBpdPrinter);
  print(stage, kBpdPrinter, 1);
  Stage::unlisten(1, kBpdPrinter);
}
void plainJob(Stage& stage) {
  const Opened printer(stage, kPlainPrinter);
  print(stage, kPlainPrinter, 1);
}

void exchangeNpa(Stage& stage, std::uint32_t handle) {
  const Opened printer(stage, handle);
  const Data packet = bytes({0xA5, 0, 3, 0x50, 2, 0});
  std::uint8_t reply[32];
  std::uint32_t length = 0;
  const auto rc =
      QvnExchangeNpaPrinter(1, handle, packet.getBuffer(), packet.getLength(), reply, 32, &length);
  stage.did("exchange " + std::to_string(length), rc);
}

void readCache(Stage& stage, bool channel, bool open) {
  stage.hasCacheChannel = channel;
  std::unique_ptr<Opened> printer;
  if (open) printer = std::make_unique<Opened>(stage, kPrinter);
  std::uint8_t cache[1024];
  std::uint32_t length = 0;
  const std::uint32_t rc = QvnGetCachePrinter(1, kPrinter, cache, sizeof cache, &length);
  stage.did("cache " + std::to_string(length), rc);
}

void alerts(Stage& stage, bool unregisters) {
  const Opened printer(stage, kPrinter);
  stage.did("register", QvnRegisterForAlertsPrinter(1, kPrinter, 0x180000, heard::alert));
  stage.fake.deliver(kPanelAlert, kPrinter);
  if (unregisters) stage.did("unregister", QvnUnregisterForAlertsPrinter(1, kPrinter));
  stage.fake.deliver(kPanelAlert, kPrinter);
}

void notifications(Stage& stage) {
  const Opened printer(stage, kPrinter);
  stage.listen(1, kPrinter);
  print(stage, kPrinter, 1);
  Stage::unlisten(1, kPrinter);
}

void attributes(Stage& stage) {
  const auto setAll = [&] {
    const std::uint8_t level = 9;
    stage.did("long", QvnSetLongPrinter(1, kPrinter, attribute::kTrueEndOfJob, 1));
    stage.did("text", QvnSetStringPrinter(1, kPrinter, attribute::kNickname, "name", 4));
    stage.did("bytes", QvnSetByteArrayPrinter(1, kPrinter, attribute::kNpaRevisionLevel, &level, 1));
  };
  setAll();
  const Opened printer(stage, kPrinter);
  setAll();
}

void scan(Stage& stage, bool cancels) {
  const Opened scanner(stage, kScanner);
  stage.listen(1, kScanner);
  stage.did("start", QvnStartJobScanner(1, kScanner, nullptr));
  stage.did("data", stage.fake.deliver(kScanBlock, kScanner));
  if (cancels) stage.did("cancel", QvnCancelJobScanner(1, kScanner));
  stage.did("status", stage.fake.deliver(kScanStatus, kScanner));
  stage.did("end", QvnEndJobScanner(1, kScanner));
}

void exchangeEsc(Stage& stage) {
  const Opened scanner(stage, kScanner);
  const Data command = bytes({0x1B, 'S', 'V', 0, 0, 0, 0, 0});
  std::uint8_t reply[32];
  std::uint32_t length = 0;
  const auto rc =
      QvnExchangeDataScanner(1, kScanner, command.getBuffer(), command.getLength(), reply, 32, &length);
  stage.did("exchange " + std::to_string(length), rc);
  stage.did("parameter", QvnSetJobStringScanner(1, kScanner, "key", "value"));
}

void bpdScan(Stage& stage, bool completes) {
  const Opened scanner(stage, kBpdScanner);
  stage.listen(1, kBpdScanner);
  stage.did("parameter", QvnSetJobLongScanner(1, kBpdScanner, "Scan.Param.Resolution", 300));
  if (stage.did("start", QvnStartJobScanner(1, kBpdScanner, nullptr)) == 0) stage.await("started");
  stage.tell(kBpdScanner, "<Scan.Data>dots");
  if (completes) {
    stage.tellState(kBpdScanner, "Complete");
    stage.tell(kBpdScanner, "<Job.End>");
  }
  stage.did("end", QvnEndJobScanner(1, kBpdScanner));
}

void hid(Stage& stage) {
  const Opened first(stage, kHid);
  const Opened second(stage, kHid, 2);
  stage.listen(1, kHid);
  stage.tell(kHid, "key");
  stage.tellEvent(kHid, 4);
  Stage::unlisten(1, kHid);
}

void discovery(Stage& stage) { stage.did("discover", QvnDiscovery(1, FakeTransport::kName, "")); }

// The local transports are searched for what is not stored.
void lookUps(Stage& stage) {
  ApplicationSettings().setString(setting_key::kLocalTransports, FakeTransport::kName,
                                  Stage::transportModule(), SettingsStore::kLocal);
  for (const auto& [what, lookUp] : {std::pair("printer", &QvnEnumSpecificPrinter),
                                     {"scanner", &QvnEnumSpecificScanner},
                                     {"hid", &QvnEnumSpecificHid}}) {
    std::uint32_t handle = 0;
    stage.did(what, lookUp(1, "UNKNOWN", &handle));
  }
}

const std::vector<Use> uses = {
    {"CpdOpen", {kPrinter}, [](Stage& s) { openTwice(s, kPrinter); }},
    {"BpdOpen", {kBpdPrinter}, [](Stage& s) { openTwice(s, kBpdPrinter); }},
    {"CpdDirectJob", {kPrinter}, directJob},
    {"CpdBufferedJob", {kPrinter}, bufferedJob},
    {"CpdCancelledJob", {kPrinter}, cancelledJob},
    {"CpdAbandonedJob", {kPrinter}, abandonedJob},
    {"BpdNpaJob", {kBpdPrinter}, bpdJob},
    {"BpdPlainJob", {kPlainPrinter}, plainJob},
    {"CpdExchange", {kPrinter}, [](Stage& s) { exchangeNpa(s, kPrinter); }},
    {"BpdExchange", {kBpdPrinter}, [](Stage& s) { exchangeNpa(s, kBpdPrinter); }},
    {"CacheChannelOpen", {kPrinter}, [](Stage& s) { readCache(s, true, true); }},
    {"CacheChannelClosed", {kPrinter}, [](Stage& s) { readCache(s, true, false); }},
    {"CacheByNpaOpen", {kPrinter}, [](Stage& s) { readCache(s, false, true); }},
    {"CacheByNpaClosed", {kPrinter}, [](Stage& s) { readCache(s, false, false); }},
    {"Alerts", {kPrinter}, [](Stage& s) { alerts(s, true); }},
    {"AlertsLeft", {kPrinter}, [](Stage& s) { alerts(s, false); }},
    {"Notifications", {kPrinter}, notifications},
    {"Attributes", {kPrinter}, attributes},
    {"CpdScan", {kScanner}, [](Stage& s) { scan(s, false); }},
    {"CpdCancelledScan", {kScanner}, [](Stage& s) { scan(s, true); }},
    {"CpdScanExchange", {kScanner}, exchangeEsc},
    {"BpdScan", {kBpdScanner}, [](Stage& s) { bpdScan(s, true); }},
    {"BpdCancelledScan", {kBpdScanner}, [](Stage& s) { bpdScan(s, false); }},
    {"Hid", {kHid}, hid},
    {"Discovery", {kPrinter}, discovery},
    {"LookUps", {kPrinter}, lookUps},
};

// How a call fails; a code only where the call has one to give.
enum class Fault { Code, OwnException, ForeignException };
constexpr std::pair<Fault, const char*> kFaults[] = {
    {Fault::Code, "fails"}, {Fault::OwnException, "throws 64"}, {Fault::ForeignException, "throws an int"}};

bool hasCode(const std::string& call) {
  const std::string without[] = {"setData", "setDevice", "releaseVisitor", "releaseConnection", "cancel"};
  return std::ranges::find(without, call) == std::end(without);
}

// The calls of one run, of which one may fail.
class Calls {
 public:
  void failAt(std::size_t number, const std::string& name, Fault fault) {
    failing_ = number;
    failingName_ = name;
    fault_ = fault;
  }
  std::vector<std::string> names() {
    const std::lock_guard guard(mutex_);
    return names_;
  }

  std::uint32_t reach(const char* name) {
    {
      const std::lock_guard guard(mutex_);
      names_.emplace_back(name);
      // How many calls there are before it depends on what failed earlier.
      const bool isLast = failingName_ == "uninitialize";
      if (isLast ? name != failingName_ : names_.size() != failing_) return QRN_ERROR_SUCCESS;
    }
    if (fault_ == Fault::OwnException) throw Win32Exception("a transport's", kFailure, "", 0);
    if (fault_ == Fault::ForeignException) throw 7;
    return kFailure;
  }

 private:
  std::mutex mutex_;
  std::vector<std::string> names_;
  std::size_t failing_ = 0;
  std::string failingName_;
  Fault fault_ = Fault::Code;
};

class FaultSweep : public testing::TestWithParam<Use> {
 protected:
  // One use, and that nothing holds its devices afterwards.
  std::vector<std::string> play(Stage& stage) {
    stage.store(GetParam().devices);
    Stage::set("CpdPrinterMwo", 0);
    stage.take();
    GetParam().play(stage);
    for (const std::uint32_t handle : GetParam().devices) EXPECT_EQ(kindOf(handle).remove(1, handle), 0u);
    return stage.take();
  }

  // Its threads may still compute while the time of another one is up.
  ManualClock clock{ManualClock::Mode::AutoAdvance,
                    std::chrono::milliseconds(std::string(GetParam().name).starts_with("Bpd") ? 25 : 3)};
  CaseWatch watch;
};

TEST_P(FaultSweep, EveryCallToTheTransport) {
  std::vector<std::string> usual;
  std::vector<std::string> names;
  {
    Stage stage;
    Calls calls;
    watch.begin(GetParam().name);
    stage.fake.onCall = [&](const char* name) { return calls.reach(name); };
    ASSERT_EQ(QvnInitialize(), 0u);
    usual = play(stage);
    EXPECT_EQ(QvnUninitialize(), 0u);
    EXPECT_EQ(stage.fake.held(), "");
    names = calls.names();
  }
  ASSERT_FALSE(names.empty());
  for (std::size_t number = 1; number <= names.size(); ++number) {
    const std::string& name = names[number - 1];
    for (const auto& [fault, how] : kFaults) {
      if (fault == Fault::Code && !hasCode(name)) continue;
      const std::string what =
          std::string(GetParam().name) + ": call " + std::to_string(number) + " (" + name + ") " + how;
      if (!watch.begin(what + ".")) continue;
      SCOPED_TRACE(what);
      Stage stage;
      Calls calls;
      calls.failAt(number, name, fault);
      stage.fake.onCall = [&](const char* call) { return calls.reach(call); };
      ASSERT_EQ(QvnInitialize(), 0u);
      play(stage);
      calls.failAt(0, name == "uninitialize" ? name : "", fault);
      EXPECT_EQ(play(stage), usual);
      EXPECT_EQ(QvnUninitialize(), 0u);
      EXPECT_EQ(stage.fake.held(), "");
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Of, FaultSweep, testing::ValuesIn(uses),
                         [](const auto& use) { return use.param.name; });

}  // namespace
}  // namespace qvn::test
