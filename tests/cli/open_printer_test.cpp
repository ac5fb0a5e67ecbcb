#include "shared/client/open_printer.h"

#include <gmock/gmock.h>

#include <atomic>

#include "library_settings.h"
#include "shared/client/session.h"
#include "support/fake_transport.h"
#include "support/manual_clock.h"
#include "support/process/eventually.h"

namespace qvn::cli {
namespace {

using test::FakeTransport;

TEST(OpenPrinter, OffersDataForAsLongAsPatienceLasts) {
  constexpr platform::Milliseconds kPatience = 60000;
  constexpr platform::Milliseconds kForEver = 0;
  struct Case {
    const char* what;
    std::uint32_t buffered;
    std::uint32_t code;  // of the connection, once it has taken two bytes
    std::uint32_t written;
    std::uint32_t ended;
    bool lost;
    platform::Milliseconds patience = kPatience;
    std::uint64_t takesAgainAfter = ~0ULL;
  };
  const test::SkippingClock clock;
  FakeTransport::registerModule();
  FakeTransport& fake = FakeTransport::instance();
  const std::string text = FakeTransport::printerText(7);
  writeLibraryValue("PrinterStore", "7", {platform::registry::ValueType::String, text});
  const Case cases[] = {{"takes nothing", 0, 1460, 1460, 0, true},
                        {"closed", 0, 64, 64, 0, false},
                        {"closed behind the buffers", 1, 64, 0, 1460, true},
                        {"takes again, waited for", 0, 1460, 0, 0, false, kForEver, 2 * kPatience}};
  for (const Case& one : cases) {
    SCOPED_TRACE(one.what);
    const std::uint64_t started = platform::clock().monotonicMilliseconds();
    fake.onExchange = [](const Data&) {
      constexpr std::uint8_t kReply[] = {0xA5, 0, 6, 0, 5, 0, 0, 0, 5};
      Data reply;
      reply.append(kReply, sizeof kReply);
      return reply;
    };
    fake.onWrite = [&](Data& data) {
      const bool again = platform::clock().monotonicMilliseconds() - started >= one.takesAgainAfter;
      const bool takes = fake.written().size() < 2 || again;
      data.setCount(again ? data.getLength() : takes ? 2 : 0);
      data.setRc(takes ? 0 : one.code);
    };
    for (const auto& [name, value] :
         {std::pair("CpdPrinterMwo", one.buffered), std::pair("TeojDuration", 0U)}) {
      writeLibraryValue("Settings", name,
                        {platform::registry::ValueType::Dword, platform::registry::dwordBytes(value)});
    }
    int lost = 0;
    {
      const Session session;
      std::atomic<bool> hasFailed{false};
      OpenPrinter printer(session, selectPrinter(session, "7"), [&](JobEvent event) {
        if (event == JobEvent::Error) hasFailed = true;
      });
      printer.setPatience(one.patience, [&] { ++lost; });
      ASSERT_EQ(printer.startJob({}), 0U);
      const std::uint64_t began = platform::clock().monotonicMilliseconds();
      if (one.buffered != 0) {
        EXPECT_EQ(printer.write(std::string(1000, 'x')), 0U);
        EXPECT_TRUE(test::eventually([&] { return hasFailed.load(); }));
        // What the buffers still take says nothing of the printer.
      }
      const std::uint32_t written = printer.write(std::string(100000, 'x'));
      const std::uint32_t ended = printer.endJob();
      // The buffers' thread moves this clock on, so that patience may be lost in the write already.
      const bool isLostInTheWrite = one.buffered != 0 && written == one.ended;
      EXPECT_EQ(written, isLostInTheWrite ? one.ended : one.written);
      EXPECT_EQ(ended, isLostInTheWrite ? 0U : one.ended);
      const std::uint64_t took = platform::clock().monotonicMilliseconds() - began;
      // The buffers' own thread moves this clock on for as long as the one that loses patience is not
      // scheduled.
      if (one.buffered == 0) {
        EXPECT_LT(took, 3 * kPatience);
      }
      EXPECT_EQ(took >= kPatience, one.lost || one.patience == kForEver);
    }
    EXPECT_EQ(lost, one.lost ? 1 : 0);
    fake.reset();
  }
}

}  // namespace
}  // namespace qvn::cli
