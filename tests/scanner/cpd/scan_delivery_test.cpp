// Who gets what a Cpd scanner sends: the exchange that waits for a reply, or the registered clients.
#include <gmock/gmock.h>

#include "scanner/cpd/scanner_fixture.h"

namespace qvn::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(CpdScannerTest, AnExchangeTakesItsReplyAndNothingElse) {
  scanner->doOpen();
  const Data late = bytes({0x1B, 'S', 'S', 7, 0, 0, 0, 0});
  const Data dpi = bytes({0x1B, 'S', 'D', 44, 1, 44, 1, 0});
  const Data own = bytes({0x1B, 'X', 'Y', 'Z', 0, 0, 0x80, 0});
  const Data ownReply = bytes({0x1B, 'X', 'Y', 'Z', 1, 0, 0, 0, 9});
  const struct {
    const char* name;
    Data request;
    std::vector<Data> before;
    Data last, reply;
  } cases[] = {
      {"its reply", dpi, {}, status(0), status(0)},
      {"scan data first", dpi, {block(1), block(2)}, status(2), status(2)},
      {"only the first status", dpi, {status(0)}, late, status(0)},
      {"another reply", bytes({0x1B, 'S', 'V', 0, 0, 0, 0, 0}), {}, status(0), Data()},
      {"no reply expected", bytes({0x1B, 'S', 'G', 0, 0, 0, 0, 0}), {}, status(0), Data()},
      {"no command at all", bytes({1, 2, 3}), {}, status(0), Data()},
      {"a command of its own", own, {status(0)}, ownReply, ownReply},
  };
  for (const auto& exchange : cases) {
    SCOPED_TRACE(exchange.name);
    fake.onExchange = [&](const Data&) {
      for (const Data& data : exchange.before) fake.deliver(data);
      return exchange.last;
    };
    Data request = exchange.request;
    Data response("left over");
    EXPECT_EQ(scanner->doExchangeData(1, request, response), 0u);
    EXPECT_EQ(asText(response), asText(exchange.reply));
  }
  EXPECT_THAT(ReceivedScanData::take(), IsEmpty());
}

TEST_F(CpdScannerTest, EveryClientGetsEveryPieceInTheOrderOfRegistration) {
  scanner->doOpen();
  scanner->doRegisterForAsyncData({16, 9, ReceivedScanData::callback});
  scanner->doRegisterForAsyncData({0, 2, ReceivedScanData::callback});
  scanner->doRegisterForAsyncData({5, 9, ReceivedScanData::callback});  // registered already: nothing changes
  scanner->doRegisterForAsyncData({0, 3, nullptr});
  scanner->doStartJob(1, nullptr);
  fake.deliver(Data());
  fake.deliver(block(1));
  EXPECT_THAT(ReceivedScanData::take(), ElementsAre(received(block(1), "9/16"), received(block(1), "2/0")));
  EXPECT_EQ(scanner->doUnregisterForAsyncData(9), 0u);
  EXPECT_EQ(scanner->doUnregisterForAsyncData(9), 0u) << "not registered any more";
  fake.deliver(block(2));
  EXPECT_THAT(ReceivedScanData::take(), ElementsAre(received(block(2), "2/0")));

  // Registrations outlive the open.
  fake.deliver(status(0));
  scanner->doClose();
  scanner->doOpen();
  scanner->doStartJob(1, nullptr);
  ReceivedScanData::take();
  fake.deliver(block(3));
  EXPECT_THAT(ReceivedScanData::take(), ElementsAre(received(block(3), "2/0")));

  Data foreign = block(4);
  CpdScannerAsyncDataManager::getInstance().accept(408, foreign);
  EXPECT_THAT(ReceivedScanData::take(), IsEmpty()) << "of another scanner";
}

}  // namespace
}  // namespace qvn::test
