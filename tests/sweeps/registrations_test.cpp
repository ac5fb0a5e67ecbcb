// Who is called when registrations change during a call, and that nobody is called who should not be.
#include <gtest/gtest.h>

#include <future>
#include <thread>

#include "support/manual_clock.h"
#include "support/other_threads.h"
#include "sweeps/stage.h"

namespace qvn::test {
namespace {

struct Source {
  const char* name;
  std::uint32_t device;
  const char* before;
  const char* words;  // the call comes in these
  const char* heard;
  bool isPassedOn;        // what is being delivered still reaches who was unregistered meanwhile
  const char* meanwhile;  // works while a client is inside the call

  friend void PrintTo(const Source& source, std::ostream* out) { *out << source.name; }
};

const Source sources[] = {
    {"Alerts", kPrinter, "Open", "alert", "alert 7", false, "GetCurrentState"},
    {"Notifications", kPrinter, "Open", "StartJob EndJob", "notification 4", false, "GetCurrentState"},
    {"CpdScanData", kScanner, "Open StartJob", "data", "scan data", true, "CancelJob"},
    {"BpdEvents", kBpdScanner, "Open", "ring", "scan 2000 Ring", false, "GetString"},
    {"HidReports", kHid, "Open", "report", "report", false, "event"},
    {"HidEvents", kHid, "Open", "event", "event", false, "report"},
};

class Registrations : private SkippingClock, public testing::TestWithParam<Source> {
 protected:
  Registrations() {
    EXPECT_EQ(QvnInitialize(), 0u);
    Stage::store({source.device});
    stage.play(source.device, source.before);
  }
  ~Registrations() override { QvnUninitialize(); }

  // The clients that hear the words, in this order.
  std::string hearers() {
    heard.clear();
    stage.play(source.device, source.words);
    return heard;
  }
  void onCall(std::function<void(std::uint32_t clientId)> call) {
    stage.onHeard = [this, call](const std::string& what, std::uint32_t clientId) {
      if (!what.starts_with(source.heard)) return;
      heard += std::to_string(clientId);
      call(clientId);
    };
  }

  const Source& source = GetParam();
  Stage stage;
  std::string heard;
};

TEST_P(Registrations, MayChangeInsideACall) {
  for (const std::uint32_t clientId : {1u, 2u, 4u}) Stage::listen(clientId, source.device);
  onCall([&](std::uint32_t clientId) {
    if (clientId != 1) return;
    Stage::listenNoMore(1, source.device);
    Stage::listenNoMore(2, source.device);
    Stage::listen(5, source.device);
  });
  EXPECT_EQ(hearers(), source.isPassedOn ? "124" : "14");
  EXPECT_EQ(hearers(), "45");
}

TEST_P(Registrations, EndOnlyWhenNoCallRunsWhichKeepsNobodyElse) {
  Stage::listen(1, source.device);
  std::promise<void> inside;
  std::promise<void> goOn;
  onCall([&](std::uint32_t) {
    inside.set_value();
    goOn.get_future().wait();
  });
  std::thread delivering([&] { hearers(); });
  inside.get_future().wait();
  EXPECT_EQ(stage.play(source.device, source.meanwhile), 0u);
  auto ending = std::async(std::launch::async, [&] { Stage::listenNoMore(1, source.device); });
  waitForOthersToRest();
  EXPECT_EQ(ending.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
  goOn.set_value();
  ending.get();
  delivering.join();
  EXPECT_EQ(hearers(), "");
}

// A client that leaves everything as it is: the library goes down while its device still sends.
TEST_P(Registrations, EndWithTheLibrary) {
  Stage::listen(1, source.device);
  std::atomic<int> calls{0};
  stage.onHeard = [&](const std::string&, std::uint32_t) { ++calls; };
  std::atomic<bool> isOver{false};
  std::thread device([&] {
    while (!isOver) stage.play(source.device, source.words);
  });
  while (calls == 0) std::this_thread::yield();
  EXPECT_EQ(QvnUninitialize(), 0u);
  const int before = calls;
  stage.play(source.device, source.words);
  EXPECT_EQ(calls, before);
  isOver = true;
  device.join();
}

INSTANTIATE_TEST_SUITE_P(Of, Registrations, testing::ValuesIn(sources),
                         [](const auto& source) { return source.param.name; });

}  // namespace
}  // namespace qvn::test
