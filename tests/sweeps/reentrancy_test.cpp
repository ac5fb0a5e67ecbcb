// From inside every kind of callback every function is called, on every device: it returns with one of the
// codes it may have, what the callback came in goes on, and everything can be closed. The same while another
// thread closes the device or takes the library down, and when the callback throws.
#include <gmock/gmock.h>

#include <algorithm>
#include <random>
#include <stdexcept>
#include <thread>

#include "common/exception.h"
#include "support/manual_clock.h"
#include "sweeps/call_table.h"
#include "sweeps/case_watch.h"
#include "sweeps/stage.h"

namespace qvn::test {
namespace {

using testing::Contains;

const std::vector<std::uint32_t> kDevices = {kPrinter,    kOtherPrinter,    kBpdPrinter, kScanner,
                                             kBpdScanner, kOtherBpdScanner, kHid,        kOtherHid};

// A kind of callback: what is heard, of which device (0: of none), and how it is brought about.
struct Origin {
  const char* name;
  const char* heard;
  std::uint32_t device;
  const char* before;
  const char* words;                       // the callback comes in these
  std::vector<std::uint32_t> usual = {0};  // what they give
  std::vector<std::uint32_t> also = {};    // what functions inside may give at this moment

  friend void PrintTo(const Origin& origin, std::ostream* out) { *out << origin.name; }
};

const Origin origins[] = {
    {"DeviceFound", "found", 0, "", "EnumPrinters"},
    {"QueueFound", "queue", 0, "", "EnumWindowsScanners"},
    {"CpdAlert", "alert 7", kPrinter, "", "alert"},
    {"BpdAlert", "alert 8", kBpdPrinter, "", "alert"},
    {"AlertInJob", "alert 7", kPrinter, "StartJob Write", "alert"},
    {"Busy", "notification 1", kPrinter, "", "StartJob"},
    {"Error", "notification 2", kPrinter, "StartJob failing", "Write", {kFailure, 0}},
    {"WritersError", "notification 2", kPrinter, "buffered StartJob Write failing", "Write inside taking"},
    {"Idle", "notification 3", kPrinter, "StartJob Write", "EndJob"},
    {"Closed", "notification 3", kPrinter, "", "Close", {0}, {1, 6, 170}},
    {"Starting", "notification 4", kPrinter, "", "StartJob"},
    {"FirstData", "notification 5", kPrinter, "StartJob", "Write"},
    {"Ending", "notification 6", kPrinter, "StartJob Write", "EndJob"},
    {"Cancelled", "notification 7", kPrinter, "StartJob cancel", "Write"},
    {"TrueEnd", "notification 8", kPrinter, "StartJob Write", "EndJob"},
    {"ScanStarted", "notification 50", kScanner, "", "StartJob"},
    {"ScanDataEnded", "notification 51", kScanner, "StartJob", "status"},
    {"ScanEnded", "notification 53", kScanner, "StartJob status", "EndJob"},
    {"CpdScanData", "scan data", kScanner, "StartJob", "data"},
    {"CpdLastStatus", "scan data", kScanner, "StartJob", "status"},
    {"BpdScanData", "scan 1000 dots", kBpdScanner, "StartJob started", "data"},
    {"BpdAlert2000", "scan 2000 Ring", kBpdScanner, "", "ring"},
    {"BpdAlert4000", "scan 4000 Scanning", kBpdScanner, "StartJob started", "scanning"},
    {"BpdJobEnd", "scan 2000 Job.End", kBpdScanner, "StartJob started complete", "jobEnd"},
    {"LibraryAlert2000", "scan 2000 TimeoutX", kBpdScanner, "", "StartJob"},
    {"LibraryAlertAtEnd", "scan 2000 Job.Cancelling", kBpdScanner, "StartJob started", "EndJob"},
    {"LibraryAlert4000", "scan 4000 Scanner.CommError", kBpdScanner, "jobless", "StartJob inside"},
    {"WatchdogAlert", "scan 2000 Job.DataTimeout", kBpdScanner, "StartJob started", "inside"},
    {"HidReport", "report", kHid, "", "report"},
    {"HidEvent", "event", kHid, "", "event"},
};

// A case: the stage with every device open and two clients that listen to all of them, up to the callback.
class Case {
 public:
  explicit Case(std::function<void()> inside) : inside_(std::move(inside)) {
    stage.onHeard = [this](const std::string& what, std::uint32_t clientId) {
      if (clientId != 1 || !armed_ || !what.starts_with(heard_)) return;
      if (armed_.exchange(false)) run();
    };
    EXPECT_EQ(QvnInitialize(), 0u);
    Stage::store(kDevices);
    Stage::set("CpdPrinterMwo", 0);
    Stage::set("CpdScanPerformanceNotifications", 1);
    for (const std::uint32_t handle : kDevices) {
      EXPECT_EQ(kindOf(handle).open(1, handle), 0u) << handle;
      for (const std::uint32_t clientId : {1u, 2u}) Stage::listen(clientId, handle);
    }
  }

  // Everything is closed, by the client and by what it asked for inside callbacks, and taken down.
  ~Case() {
    for (const std::uint32_t handle : kDevices) {
      for (int opens = 0; opens < 1000 && kindOf(handle).close(1, handle) == 0; ++opens) {
      }
    }
    for (const std::uint32_t handle : kDevices) {
      std::uint32_t rc = 170;
      while ((rc = kindOf(handle).remove(1, handle)) == 170) std::this_thread::yield();
      EXPECT_THAT(rc, testing::AnyOf(0u, 1u, 2u)) << "removed " << handle;
    }
    const bool isUp = QvnSuspend() == 0;
    while (QvnSuspend() == 0) EXPECT_EQ(QvnUninitialize(), 0u);
    if (isUp) {
      EXPECT_EQ(stage.fake.held(), "");
    }
  }
  Case(const Case&) = delete;
  Case& operator=(const Case&) = delete;

  // The origin's callback comes; the result of what it comes in.
  std::uint32_t play(const Origin& origin) {
    stage.play(origin.device, origin.before);
    heard_ = origin.heard;
    armed_ = true;
    const std::uint32_t rc = stage.play(origin.device, origin.words);
    EXPECT_FALSE(armed_.exchange(false)) << "the callback did not come";
    return rc;
  }

  Stage stage;

 private:
  void run() {
    struct Inside {
      Stage& stage;
      ~Inside() { stage.note("inside"); }
    } const note{stage};
    inside_();
  }

  std::function<void()> inside_;
  std::string heard_;
  std::atomic<bool> armed_{false};
};

class Reentrancy : public testing::TestWithParam<Origin> {
 protected:
  bool begin(const std::string& what) {
    return watch.begin(std::string(GetParam().name) + ": " + what + ".");
  }

  ManualClock clock{ManualClock::Mode::AutoAdvance, std::chrono::milliseconds(10)};
  CaseWatch watch;
};

void callAndCheck(const ExportedCall& call, std::uint32_t handle, const std::vector<std::uint32_t>& also) {
  std::vector<std::uint32_t> allowed = call.allowed;
  allowed.insert(allowed.end(), also.begin(), also.end());
  const std::uint32_t rc = call.call(handle);
  EXPECT_TRUE(std::ranges::count(allowed, rc) > 0) << call.name << "(" << handle << ") gave " << rc;
}

template <typename Wanted>
void callEach(Wanted&& wanted, const std::vector<std::uint32_t>& also) {
  for (const ExportedCall& call : exportedCalls()) {
    if (!wanted(call)) continue;
    for (const std::uint32_t handle : call.handles) callAndCheck(call, handle, also);
  }
}

TEST_P(Reentrancy, EveryFunctionInsideACallback) {
  const Origin& origin = GetParam();
  const auto run = [&](const std::string& what, const std::function<void()>& inside) {
    if (!begin(what)) return;
    SCOPED_TRACE(origin.name + (": " + what));
    EXPECT_THAT(origin.usual, Contains(Case(inside).play(origin)));
  };
  run("the harmless ones", [&] {
    callEach([](const ExportedCall& call) { return call.company == Company::Together; }, origin.also);
  });
  for (const ExportedCall& call : exportedCalls()) {
    if (call.company == Company::Together) continue;
    for (const std::uint32_t handle : call.handles) {
      run(call.name + "(" + std::to_string(handle) + ")", [&] { callAndCheck(call, handle, origin.also); });
    }
  }
}

TEST_P(Reentrancy, WhileTheDeviceIsClosedOrTheLibraryTakenDown) {
  const Origin& origin = GetParam();
  const auto meanwhile = [&](const std::string& what, const std::function<void()>& other) {
    if (!begin(what)) return;
    SCOPED_TRACE(origin.name + (": " + what));
    std::thread thread;
    {
      Case aCase([&] {
        thread = std::thread(other);
        for (int i = 0; i < 1000 && QvnSuspend() == 0; ++i) std::this_thread::yield();
        callEach([](const ExportedCall& call) { return call.company != Company::Global; },
                 {0, 1, 5, 6, 170, 1168, 1796});
      });
      aCase.play(origin);
      if (thread.joinable()) thread.join();
    }
  };
  for (const std::uint32_t handle : kDevices) {
    if (handle != origin.device) continue;
    meanwhile("closed meanwhile", [=] { EXPECT_LE(kindOf(handle).close(1, handle), 1u); });
  }
  meanwhile("taken down meanwhile", [] { EXPECT_EQ(QvnUninitialize(), 0u); });
}

TEST_P(Reentrancy, ACallbackThatThrows) {
  const Origin& origin = GetParam();
  const std::pair<const char*, std::function<void()>> throwers[] = {
      {"throws an exception", [] { throw std::runtime_error("a client's own"); }},
      {"throws the library's", [] { throw Win32Exception("a client's own", kFailure, "", 0); }},
      {"throws an int", [] { throw 7; }}};
  for (const auto& [what, thrower] : throwers) {
    if (!begin(what)) continue;
    SCOPED_TRACE(origin.name + (std::string(": ") + what));
    Case aCase(thrower);
    aCase.stage.take();
    EXPECT_THAT(origin.usual, Contains(aCase.play(origin)));
    // Of a search the next thing found; else what the other client hears, perhaps a moment later.
    const std::string other = origin.device == 0 ? "1" : "2";
    const std::ptrdiff_t calls = origin.device == 0 ? 2 : 1;
    for (int i = 0; i < 10000 && aCase.stage.count(origin.heard, other) < calls; ++i) {
      std::this_thread::yield();
    }
    EXPECT_GE(aCase.stage.count(origin.heard, other), calls) << "whoever is next is called";
    if (kindOf(origin.device).open != QvnOpenHid) continue;
    aCase.stage.take();
    aCase.stage.play(origin.device, origin.words);
    EXPECT_EQ(aCase.stage.count(origin.heard, "1"), 0) << "who threw is called no more";
  }
}

INSTANTIATE_TEST_SUITE_P(In, Reentrancy, testing::ValuesIn(origins),
                         [](const auto& origin) { return origin.param.name; });

// Four threads play the devices and call what they like, and so do the callbacks.
class RandomCalls {
 public:
  static void call() {
    const auto& calls = exportedCalls();
    while (true) {
      const ExportedCall& chosen = calls[random(calls.size())];
      if (chosen.company == Company::Global || chosen.name.starts_with("Delete")) continue;
      const std::uint32_t handle = chosen.handles[random(chosen.handles.size())];
      if (handle != 0 && std::ranges::count(devices, handle) == 0) continue;
      chosen.call(handle);
      return;
    }
  }

  static void play(Stage& stage, std::uint32_t seed) {
    generator().seed(seed);
    for (int round = 0; round < 200; ++round) {
      const std::uint32_t handle = devices[random(devices.size())];
      const char* const tales[] = {"alert", "data", "status", "ring", "jobEnd", "event", "lost"};
      stage.play(handle, tales[random(std::size(tales))]);
      if (random(4) == 0 && kindOf(handle).open(1, handle) == 0) Stage::listen(1, handle);
      call();
    }
  }

  static inline std::vector<std::uint32_t> devices;
  static inline std::atomic<bool> isOver{false};

  static void inside() {
    thread_local int depth = 0;
    if (isOver || depth > 1) return;
    ++depth;
    call();
    --depth;
  }

 private:
  static std::mt19937& generator() {
    static std::atomic<std::uint32_t> threads{0};
    thread_local std::mt19937 generator(++threads);
    return generator;
  }
  static std::uint32_t random(std::size_t below) { return static_cast<std::uint32_t>(generator()() % below); }
};

TEST(RandomReentrancy, FourThreadsAndTheCallbacksCallWhatTheyLike) {
  ManualClock clock{ManualClock::Mode::AutoAdvance};
  CaseWatch watch;
  // Of all devices, and of one of which they all want something else.
  for (const auto& devices : {kDevices, {kScanner}}) {
    watch.begin("random calls");
    RandomCalls::devices = devices;
    RandomCalls::isOver = false;
    Case aCase(nullptr);
    aCase.stage.onHeard = [](const std::string&, std::uint32_t) { RandomCalls::inside(); };
    std::vector<std::thread> threads;
    for (std::uint32_t seed = 1; seed <= 4; ++seed) {
      threads.emplace_back([&, seed] { RandomCalls::play(aCase.stage, seed); });
    }
    for (std::thread& thread : threads) thread.join();
    RandomCalls::isOver = true;
  }
}

}  // namespace
}  // namespace qvn::test
