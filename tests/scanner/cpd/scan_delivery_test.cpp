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

}  // namespace
}  // namespace qvn::test
