// Every call to a transport fails once, in every way it can, in the middle of everything that clients do:
// nothing crashes, hangs or stays behind, and afterwards the same can be done as if nothing had happened.
#include <gmock/gmock.h>

#include <algorithm>

#include "common/exception.h"
#include "support/manual_clock.h"
#include "sweeps/case_watch.h"
#include "sweeps/stage.h"

namespace qvn::test {
namespace {

// What a client does with a device, from beginning to end. It goes on when something fails.
struct Use {
  const char* name;
  std::uint32_t device;
  const char* words;

  friend void PrintTo(const Use& use, std::ostream* out) { *out << use.name; }
};

const Use uses[] = {
    {"CpdOpen", kPrinter, "Open Open Close Close"},
    {"BpdOpen", kBpdPrinter, "Open Open Close Close"},
    {"CpdDirectJob", kPrinter, "Open StartJob Write Write EndJob Close"},
    {"CpdBufferedJob", kPrinter,
     "buffered Open StartJob Write Write Write Write Write Write Write EndJob Close"},
    {"CpdCancelledJob", kPrinter, "Open StartJob Write cancel Write EndJob Close"},
    {"CpdAbandonedJob", kPrinter, "Open StartJob Write Close"},
    {"BpdNpaJob", kBpdPrinter,
     "Open RegisterForAlerts StartJob Write Write EndJob alert UnregisterForAlerts Close"},
    {"BpdPlainJob", kPlainPrinter, "Open StartJob Write Write EndJob Close"},
    {"CpdExchange", kPrinter, "Open ExchangeNpa Close"},
    {"BpdExchange", kBpdPrinter, "Open ExchangeNpa Close"},
    {"CacheChannelOpen", kPrinter, "channel Open GetCache Close"},
    {"CacheChannelClosed", kPrinter, "channel GetCache"},
    {"CacheByNpaOpen", kPrinter, "Open GetCache Close"},
    {"CacheByNpaClosed", kPrinter, "GetCache"},
    {"Alerts", kPrinter, "Open RegisterForAlerts alert UnregisterForAlerts alert Close"},
    {"AlertsLeft", kPrinter, "Open RegisterForAlerts alert Close"},
    {"Notifications", kPrinter,
     "Open RegisterForNotifications StartJob Write EndJob UnregisterForNotifications Close"},
    {"Attributes", kPrinter, "SetLong SetString SetByteArray Open SetLong SetString SetByteArray Close"},
    {"CpdScan", kScanner, "Open RegisterForAsyncData StartJob data status EndJob Close"},
    {"CpdCancelledScan", kScanner, "Open RegisterForAsyncData StartJob data CancelJob status EndJob Close"},
    {"CpdScanExchange", kScanner, "Open ExchangeData SetJobString Close"},
    {"BpdScan", kBpdScanner,
     "Open RegisterForAsyncData SetJobLong StartJob started data complete jobEnd EndJob Close"},
    {"BpdCancelledScan", kBpdScanner, "Open RegisterForAsyncData StartJob started data EndJob Close"},
    {"BpdAbandonedScan", kBpdScanner, "Open RegisterForAsyncData StartJob started data Close"},
    {"Hid", kHid,
     "Open Open RegisterForReports RegisterForNotifications report event UnregisterForReports "
     "UnregisterForNotifications Close Close"},
    {"Discovery", 0, "Discovery"},
    {"LookUps", 0, "lookUps"},
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
  // The use, and that nothing holds its device afterwards.
  std::vector<std::string> play(Stage& stage) {
    const auto& [name, device, words] = GetParam();
    if (device != 0) Stage::store({device});
    Stage::set("CpdPrinterMwo", 0);
    stage.take();
    stage.play(device, words);
    if (device != 0) {
      EXPECT_EQ(kindOf(device).remove(1, device), 0u);
    }
    // When its thread starts a Bpd scanner's job differs.
    std::vector<std::string> lines = stage.take();
    std::erase(lines, "started by its device");
    return lines;
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

TEST(TakenDown, WithEverythingOpenItGivesAllBack) {
  ManualClock clock{ManualClock::Mode::AutoAdvance};
  Stage stage;
  ASSERT_EQ(QvnInitialize(), 0u);
  const std::pair<std::uint32_t, const char*> open[] = {
      {kPrinter, "buffered Open RegisterForAlerts RegisterForNotifications StartJob Write Write"},
      {kBpdPrinter, "Open RegisterForAlerts StartJob Write"},
      {kScanner, "Open RegisterForAsyncData StartJob data"},
      {kBpdScanner, "Open RegisterForAsyncData StartJob started data"},
      {kHid, "Open RegisterForReports RegisterForNotifications report"},
  };
  for (const auto& [device, words] : open) {
    Stage::store({device});
    EXPECT_EQ(stage.play(device, words), 0u) << device;
    EXPECT_THAT(stage.fake.held(), testing::HasSubstr("of " + std::to_string(device)));
  }
  EXPECT_EQ(QvnUninitialize(), 0u);
  EXPECT_EQ(stage.fake.held(), "");
}

}  // namespace
}  // namespace qvn::test
