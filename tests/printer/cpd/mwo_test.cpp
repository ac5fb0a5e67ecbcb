// The buffered writer, on a clock that moves only when the test says so.
#include "printer/cpd/mwo.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include "common/exception.h"
#include "printer/cpd/cpd_printer.h"
#include "support/library_fixture.h"
#include "support/manual_clock.h"
#include "support/other_threads.h"

namespace qvn::test {
namespace {

// A printer that only takes what the writer writes; the test may hold its writes and have others in their
// place.
class Sink : public Printer {
 public:
  ~Sink() override = default;
  std::uint32_t doWrite(Data& request) override {
    std::unique_lock<std::mutex> lock(mutex_);
    ++begun_;
    changed_.notify_all();
    changed_.wait(lock, [&] { return !held_; });
    if (instead_) {
      if (const auto rc = instead_()) return *rc;
    }
    text_ += asText(request);
    request.setCount(request.getLength());
    request.consume(request.getLength(), false);
    return 0;
  }

  std::uint32_t doCancelPrint() override {
    ++cancels;
    return mwo->purge();
  }

  void hold(bool held) {
    std::lock_guard<std::mutex> lock(mutex_);
    held_ = held;
    changed_.notify_all();
  }
  // What a write does before it writes; what it answers the write answers in its place.
  using Instead = std::function<std::optional<std::uint32_t>()>;
  void insteadOfWriting(Instead instead) {
    std::lock_guard<std::mutex> lock(mutex_);
    instead_ = std::move(instead);
  }
  // Blocks until so many writes have begun.
  void waitForWrites(int count) {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [&] { return begun_ >= count; });
  }
  std::string text() {
    std::lock_guard<std::mutex> lock(mutex_);
    return text_;
  }

  Mwo* mwo = nullptr;
  int cancels = 0;

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  int begun_ = 0;
  Instead instead_;
  bool held_ = false;
  std::string text_;
};

class MwoTest : public StandingClock, public LibraryTest {
 protected:
  std::uint32_t print(Mwo& mwo, const std::string& text) {
    Data request(text);
    const std::uint32_t rc = mwo.print(request);
    EXPECT_EQ(request.getCount(), rc == 0 ? text.size() : 0u);
    return rc;
  }

  // Runs `work` on its own thread and moves the time until it is done.
  template <typename Work>
  void whileTimePasses(Work&& work) {
    std::atomic<bool> done{false};
    std::thread worker([&] {
      work();
      done = true;
    });
    while (!done) {
      if (!clock.advanceToNext()) std::this_thread::yield();
    }
    worker.join();
  }

  Sink sink;
};

TEST_F(MwoTest, TheWriterWakesWithTheFifthBufferOrAfterThreeSeconds) {
  Mwo mwo(sink);
  mwo.begin();
  print(mwo, "0");
  print(mwo, "1");
  ASSERT_TRUE(clock.waitForWaiters(1));
  clock.advance(2999);
  waitForOthersToRest();
  EXPECT_EQ(sink.text(), "0");
  clock.advance(1);
  sink.waitForWrites(2);
  ASSERT_TRUE(clock.waitForWait(75)) << "from now on it looks every so often";
  print(mwo, "2");
  clock.advance(75);
  sink.waitForWrites(3);
  whileTimePasses([&] { mwo.stop(); });

  Mwo other(sink);
  other.begin();
  for (const char* const text : {"a", "b", "c", "d", "e"}) print(other, text);
  waitForOthersToRest();
  EXPECT_EQ(sink.text(), "012a");
  print(other, "f");
  sink.waitForWrites(3 + 6);  // without the time moving on
  whileTimePasses([&] { other.stop(); });
  EXPECT_EQ(sink.text(), "012abcdef");
}

TEST_F(MwoTest, AFullQueueSlowsTheClientDownAndThenRefuses) {
  Mwo mwo(sink);
  mwo.begin();
  EXPECT_EQ(mwo.waitTime(), 5000u) << "five buffers of a second each, at most five seconds";
  print(mwo, "first");
  sink.hold(true);
  for (int i = 0; i < 10; ++i) EXPECT_EQ(print(mwo, "x"), 0u);
  sink.waitForWrites(2);  // from now on only the client waits for the clock
  std::thread eleventh([&] { EXPECT_EQ(print(mwo, "y"), 0u); });
  ASSERT_TRUE(clock.waitForWaiters(1));
  clock.advance(5000);
  eleventh.join();
  std::thread refused([&] { EXPECT_EQ(print(mwo, "z"), 122u); });
  ASSERT_TRUE(clock.waitForWaiters(1));
  clock.advance(5000);
  refused.join();
  sink.hold(false);
  whileTimePasses([&] { mwo.stop(); });
  EXPECT_EQ(sink.text(), "firstxxxxxxxxxxy");
}

TEST_F(MwoTest, AFailedWriteIsRetriedUntilItSucceeds) {
  Mwo mwo(sink);
  mwo.begin();
  print(mwo, "0");
  print(mwo, "1");
  int tries = 0;
  sink.insteadOfWriting([&]() -> std::optional<std::uint32_t> {
    switch (++tries) {
      case 1:
        return 64;
      case 2:
        throw Win32Exception("write", 31, "", 0);
      case 3:
        throw 5;
      default:
        return std::nullopt;
    }
  });
  whileTimePasses([&] { mwo.stop(); });
  EXPECT_EQ(sink.text(), "01");
  const auto sleeps = clock.sleeps();
  EXPECT_EQ(std::count(sleeps.begin(), sleeps.end(), 1000u), 3);
}

TEST_F(MwoTest, NothingIsTakenBetweenAStopAndTheNextJob) {
  Mwo mwo(sink);
  mwo.begin();
  print(mwo, "0");
  sink.hold(true);
  print(mwo, "1");
  std::thread ending([&] { mwo.stop(); });
  sink.waitForWrites(2);  // nothing but the stop wakes the writer
  EXPECT_EQ(print(mwo, "overtakes"), 1u);
  sink.hold(false);
  ending.join();
  EXPECT_EQ(sink.text(), "01");
  EXPECT_EQ(print(mwo, "2"), 0u);
  EXPECT_EQ(sink.text(), "012") << "it is the printer that knows whether there is a job";
  mwo.begin();
  bool failed = false;
  sink.insteadOfWriting([&]() -> std::optional<std::uint32_t> {
    if (std::exchange(failed, true)) return std::nullopt;
    return 64;
  });
  EXPECT_EQ(print(mwo, "3"), 0u) << "queued: its writer tries again";
  whileTimePasses([&] { mwo.stop(); });
  EXPECT_EQ(sink.text(), "0123");
}

TEST_F(MwoTest, ACancelIsCarriedOutWhileTheEndOfItsJobWaits) {
  Mwo mwo(sink);
  sink.mwo = &mwo;
  print(mwo, "0");
  mwo.requestCancel();
  for (const bool cancelled : {false, true}) {
    mwo.begin();
    int tries = 0;
    sink.insteadOfWriting([&]() -> std::optional<std::uint32_t> {
      if (cancelled) mwo.requestCancel();
      if (cancelled || ++tries <= 3) return 64;
      return std::nullopt;
    });
    print(mwo, "1");
    whileTimePasses([&] { mwo.stop(); });
    EXPECT_EQ(sink.cancels, cancelled ? 1 : 0) << "what was asked for before a job is not meant for it";
  }
  EXPECT_EQ(sink.text(), "01");
}

TEST_F(MwoTest, TakesOnlySensibleLimits) {
  const struct {
    std::uint32_t high;
    std::uint32_t low;
    std::uint32_t expectedHigh;
  } cases[] = {{4, 6, 10}, {3, 3, 10}, {0, 0, 10}, {20, 2, 20}};
  for (const auto& c : cases) {
    set("MwoBufferHwm", c.high);
    set("MwoBufferLwm", c.low);
    const Mwo mwo(sink);
    EXPECT_EQ(Mwo::limits().highWaterMark, c.expectedHigh) << c.high << " " << c.low;
  }
}

TEST_F(MwoTest, APrinterThatGoesAwayEndsItsWriterWhateverItsWritesDo) {
  const std::function<void(Data&)> writes[] = {nullptr, [](Data& data) { data.setRc(64); },
                                               [](Data&) { throw std::runtime_error("write"); }};
  fake.onExchange = [](const Data&) { return bytes({0xA5, 0, 6, 0, 5, 0, 0, 0, 5}); };
  for (const auto& write : writes) {
    auto printer = std::make_unique<CpdPrinter>();
    printer->setAttributes(FakeTransport::printerText(7));
    printer->doOpen();
    ASSERT_EQ(printer->doStartJob({}), 0u);
    Data first("x", 1);
    printer->doPrint(first);
    fake.onWrite = write;
    for (int i = 0; i < 5; ++i) {
      Data data("x", 1);
      EXPECT_EQ(printer->doPrint(data), 0u);
    }
    whileTimePasses([&] { printer.reset(); });
    fake.onWrite = nullptr;
  }
}

}  // namespace
}  // namespace qvn::test
