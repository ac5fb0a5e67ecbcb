// The tasks of a print job: their packets, settings, retries and waits.
#include <gmock/gmock.h>

#include "common/logging/log_text.h"
#include "printer/bpd/dc_summary_task.h"
#include "printer/printer_fixture.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"

namespace qvn::test {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

using PrintJobTaskTest = CpdPrinterTest;

TEST_F(PrintJobTaskTest, TheDateGoesOutWithTheKeptHostId) {
  set("CpdPrinterDate", 1);
  clock.setNow(std::chrono::system_clock::from_time_t(1009843200 + 10 * 86400));
  startJob();
  printer->doEndJob();
  printer->doStartJob({});
  const auto dates = fake.calls("npa print E084");
  Data hostId;
  ASSERT_TRUE(ApplicationSettings().getBinary("Settings\\", "CpdPrinterHostId", hostId, 0));
  EXPECT_EQ(hostId.getLength(), 6u);
  ASSERT_THAT(dates, SizeIs(1));
  EXPECT_EQ(dates[0], (LogText() << "npa print E0840001000A").hex(hostId).str());
}

TEST_F(PrintJobTaskTest, AJobWithoutDataOrAnIdIsOpenInTheCacheUntilItsEnd) {
  startReply = jobReply(0, 7);
  printer->setCache(*cacheReply);
  startJob();
  EXPECT_EQ(printer->jobDescription().printerJobId(), 1u) << "the reply has none";
  EXPECT_EQ(printer->jobDescription().request().userName, " ") << "nor has the job a user";
  EXPECT_EQ(printer->cache().getBuffer()[18], 1);
  printer->doEndJob();
  EXPECT_EQ(printer->cache().getBuffer()[18], 0);
  EXPECT_THAT(fake.calls("write"), IsEmpty()) << "nothing is there to be cancelled";
}

TEST_F(PrintJobTaskTest, ASettingOfTheWrongTypeCountsAsItsDefault) {
  for (const char* const name : {"AIOLockEnabled", "CpdPrinterDate", "CpdPrinterHostId", "TeojInterval",
                                 "TeojDuration", "MwoBufferHwm", "MwoBufferLwm", "CpdPrinterMwo"}) {
    ApplicationSettings().setString("Settings\\", name, "soon", 0);
  }
  makePrinter();
  EXPECT_EQ(printer->doOpen(), 0u);
  EXPECT_EQ(printer->doStartJob({}), 0u);
  EXPECT_TRUE(printer->isWriterEnabled());
  EXPECT_EQ(print(marker()), 0u);
  completedReply.reset();
  fake.takeCalls();
  EXPECT_EQ(printer->doEndJob(), 0u);
  EXPECT_THAT(fake.calls("npa print 0502"), SizeIs(60));
  EXPECT_THAT(fake.calls("npa"), testing::Contains("npa print 0501000005"));
  EXPECT_THAT(fake.calls("npa print E08"), IsEmpty()) << "no lock, no date";
}

TEST_F(PrintJobTaskTest, TheSummaryReachesAttributesAndTransport) {
  printer->doOpen();
  const Connection connection = printer->doGetConnection("bidi");
  Data summary = bytes({0xA5, 0, 29, 0, 1, 0, 7, 8, 9});
  summary.append(Data(20, 0));
  summary.append(bytes({0x10, 0x20, 0}));
  fake.onExchange = [&](const Data&) { return summary; };
  std::string sizeText;
  fake.onVisitor = [&](const std::string& visitor, Data* data) {
    if (visitor == "setMaxPacketSizeVisitor") sizeText = asText(*data);
    return visitor == "setMaxPacketSizeVisitor" ? 31u : 0u;
  };
  EXPECT_EQ(DcSummaryTask(*printer, connection).execute(), 31u) << "the transport's answer to the size";
  EXPECT_EQ(sizeText, "<MaxWritePacketSize>4128</MaxWritePacketSize>");
  std::uint32_t size = 0;
  EXPECT_EQ(AttributeCodec::getLong(printer->getAttributes(), attribute::kMaxWritePacketSize, size), 0u);
  EXPECT_EQ(size, 4128u);
  std::uint8_t revisions[3] = {};
  std::uint32_t length = 0;
  EXPECT_EQ(AttributeCodec::getByteArray(printer->getAttributes(), attribute::kNpaRevisionLevel, revisions, 3,
                                         length),
            0u);
  EXPECT_THAT(revisions, testing::ElementsAre(7, 8, 9));

  summary.getBuffer()[3] = 0x80;
  EXPECT_EQ(DcSummaryTask(*printer, connection).execute(), 22u) << "rejected";
  fake.onExchange = nullptr;
  EXPECT_EQ(DcSummaryTask(*printer, connection).execute(), 1460u);
  fake.onVisitor = [](const std::string&, Data*) { return 1u; };
  EXPECT_EQ(DcSummaryTask(*printer, connection).execute(), 0u) << "a transport without exchanges";
}

}  // namespace
}  // namespace qvn::test
