#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <new>
#include <thread>

#include "common/logging/library_logger.h"
#include "common/logging/trace_scope.h"
#include "common/settings/application_settings.h"
#include "common/settings/localize.h"
#include "platform/files/paths.h"
#include "support/content_of.h"
#include "support/manual_clock.h"
#include "support/process/forked.h"
#include "support/throws.h"

namespace qvn {
namespace {

using testing::IsEmpty;

const char moduleAddress = 0;

// Made before the fixture's members, which need it.
struct Localized {
  Localized() { Localize::createInstance(&moduleAddress); }
  ~Localized() { Localize::destroyInstance(); }
};

class LoggingTest : public Localized, public testing::Test {
 protected:
  LoggingTest() {
    settings.create();
    BasicLogger::setInstance(std::make_unique<LibraryLogger>());
    set("Clocktime_In_Header", 0);
  }
  ~LoggingTest() override { BasicLogger::destroyInstance(); }

  void set(const std::string& name, std::uint32_t value) { settings.setLong("Logger", name, value, 0); }

  std::string contents() { return test::contentOf(platform::nativePath("c:\\qr__.log")); }

  // Component names are padded to this.
  std::string line(std::string component, const std::string& text) {
    component.resize(25, ' ');
    return component + " " + text + "\r\n";
  }

  // Before anything reads the tick count.
  test::ManualClock clock;
  ApplicationSettings settings;
  Component& server = log_component::server();
};

TEST(BasicLogger, ThrowsAndIsDisabledWhileThereIsNone) {
  EXPECT_FALSE(BasicLogger::isEnabled(log_component::server(), 1));
  EXPECT_THAT([] { BasicLogger::getInstance(); }, test::throwsWin32("BasicLogger::getInstance()", 1));
}

TEST_F(LoggingTest, WithoutStartLogWhichIsSeenWithinTenSecondsOnlyErrorsAreWritten) {
  for (const std::uint32_t level : {1u, 2u, 4u, 8u}) {
    log(server, level, [=] { return LogText() << "level " << level; });
  }
  EXPECT_EQ(contents(), line("Server", "level 1"));
  set("startLog", 1);
  clock.advance(10000);
  EXPECT_FALSE(BasicLogger::isEnabled(server, 8));
  clock.advance(1);
  EXPECT_TRUE(BasicLogger::isEnabled(server, 8));
  std::uint32_t all = 0;
  EXPECT_TRUE(settings.getLong("Logger", "All", all, 0)) << "the first test writes the masks";
  EXPECT_EQ(all, 0xFFFFFFFFu);
}

TEST_F(LoggingTest, AMaskBitOfAllOrOfTheComponentWantsTheLevel) {
  set("startLog", 1);
  set("All", 0);
  set("Server", 8);
  EXPECT_TRUE(BasicLogger::isEnabled(server, 8));
  EXPECT_FALSE(BasicLogger::isEnabled(server, 2));
  EXPECT_TRUE(BasicLogger::isEnabled(log_component::bidi(), 2)) << "Bidi's own default is everything";
  EXPECT_FALSE(BasicLogger::isEnabled(log_component::serverHid(), 2));
  set("All", 2);
  EXPECT_TRUE(BasicLogger::isEnabled(log_component::serverHid(), 2));
}

TEST(Component, WantsEverythingOrNothingByDefault) {
  std::vector<std::string> wanting;
  for (std::size_t i = 0; i < log_component::kCount; ++i) {
    const Component& component = log_component::at(i);
    if (component.getMask() == 0xFFFFFFFF) wanting.push_back(component.getName());
    EXPECT_TRUE(component.getMask() == 0xFFFFFFFF || component.getMask() == 0) << component.getName();
  }
  EXPECT_THAT(wanting,
              testing::ElementsAre("Bidi", "ComClientBidi", "LegacyClient", "PortMonitorUI", "PrintMonitor"));
}

TEST_F(LoggingTest, WithoutTheLibrarysKeyOrOnceStoppedNothingIsWritten) {
  const std::function<void()> cases[] = {[this] { settings.deleteKey("", 0); }, [] { BasicLogger::stop(); }};
  for (const auto& silence : cases) {
    settings.create();
    test::inOwnProcess([&] {
      // From the second time on it is known.
      for (int i = 0; i < 2; ++i) EXPECT_TRUE(BasicLogger::isEnabled(server, log_level::kError));
      silence();
      logError(server, [] { return LogText() << "lost"; });
      EXPECT_THAT(contents(), IsEmpty());
    });
  }
}

TEST_F(LoggingTest, TheHeaderShowsWhatIsAskedFor) {
  set("Clocktime_In_Header", 1);
  set("Proc_Id_In_Header", 1);
  set("Thread_Id_In_Header", 1);
  logError(server, [] { return LogText() << "text"; });
  EXPECT_THAT(contents(),
              testing::MatchesRegex("[0-9]{4}/[0-9]{2}/[0-9]{2}-[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3} "
                                    "pid=[0-9a-f]{4,} tid=[0-9a-f]{4,} Server {20}text\r\n"));
}

TEST_F(LoggingTest, AScopeEnteredWhileUnwantedWritesNothingLater) {
  {
    TraceScope scope(BasicLogger::getInstance(), server, [] { return LogText() << "x"; });
    set("startLog", 1);
    clock.advance(20000);
    scope.logDetail([] { return LogText() << " detail"; });
  }
  EXPECT_THAT(contents(), IsEmpty());
}

TEST_F(LoggingTest, ALineThatCannotBeMadeFailsNobody) {
  struct WithoutMemory : BasicLogger {
    WithoutMemory() : BasicLogger("qr__.log") {}
    bool isWanted(const Component&, std::uint32_t) const override { throw std::bad_alloc(); }
  };
  const auto use = [this] {
    const auto noText = []() -> LogText { throw std::bad_alloc(); };
    logError(server, noText);
    const TraceScope scope(BasicLogger::getInstance(), server, noText);
  };
  set("startLog", 1);
  EXPECT_NO_THROW(use());
  BasicLogger::destroyInstance();
  BasicLogger::setInstance(std::make_unique<WithoutMemory>());
  EXPECT_NO_THROW(use());
  EXPECT_THAT(contents(), IsEmpty());
}

// The stamps of lines that threads and processes write at once would go backwards otherwise.
TEST(BasicLogger, ComposesALineUnderTheFilesMutex) {
  struct Composing : BasicLogger {
    Composing() : BasicLogger("composed.log") {}
    std::string prefix(const Component&, std::uint32_t) const override {
      bool isFree = true;
      std::thread([&] { isFree = Mutex(false, "QRLOG_composed.log", true).acquire(1); }).join();
      return isFree ? "free " : "held ";
    }
  };
  Composing().log(log_component::server(), 1, "text");
  EXPECT_THAT(test::contentOf(platform::nativePath("c:\\composed.log")), testing::StartsWith("held "));
}

TEST_F(LoggingTest, TheColumnWidthAndTheFileCanBeChanged) {
  BasicLogger& logger = BasicLogger::getInstance();
  EXPECT_EQ(logger.setNameWidth(0), 87u);
  EXPECT_EQ(logger.setNameWidth(3), 0u);
  logger.log(server, 1, "text");
  EXPECT_EQ(contents(), "Server text\r\n");
  logger.deleteLogFile();
  EXPECT_THAT(contents(), IsEmpty());
}

TEST(LogText, WritesEachKindOfValue) {
  const std::uint8_t bytes[] = {0x0A, 0xFF};
  EXPECT_EQ((LogText() << "a" << 4294967295u << -5 << true << false).str(), "a4294967295-5truefalse");
  EXPECT_EQ(LogText().radix(255, 16).radix(5, 2).str(), "ff101");
  EXPECT_EQ(LogText().hex(bytes, 2).hex(nullptr, 2).str(), "0AFF");
  EXPECT_EQ(LogText().maskBytes(0x00100002).str(), "02 00 10 00 ");
  EXPECT_EQ((LogText() << static_cast<const void*>(nullptr)).str(), "0x00000000");
}

}  // namespace
}  // namespace qvn
