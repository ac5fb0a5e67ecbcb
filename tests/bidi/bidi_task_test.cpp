#include "bidi/bidi_task.h"

#include <gmock/gmock.h>

#include "bidi/generic_bidi_task.h"
#include "npa/job_commands.h"
#include "printer/cpd/cpd_printer.h"
#include "support/kept_log/kept_log.h"
#include "support/library_fixture.h"

namespace qvn::test {
namespace {

using testing::ElementsAre;

class BidiTaskTest : public LibraryTest {
 protected:
  BidiTaskTest() {
    printer.setAttributes(FakeTransport::printerText(7));
    printer.setBidiAllowed(true);
    connection = printer.doGetConnection("bidi");
  }

  std::uint32_t run() { return BidiTask(printer, connection, command.packet(), response).execute(); }

  CpdPrinter printer;
  Connection connection;
  StartJobCommand command;
  Data response{"old", 3};
};

TEST_F(BidiTaskTest, TakesTheFirstReplyAndNothingElse) {
  const auto reply = [](int flags, int code, int id) {
    return bytes({0xA5, 0, 6, flags, code, 0, 0, 0, id});
  };
  const struct {
    std::optional<Data> before, last;
    std::uint32_t rc;
    Data response;
  } cases[] = {
      {{}, reply(0, 5, 9), 0, reply(0, 5, 9)},
      {reply(0, 5, 1), reply(0, 5, 2), 0, reply(0, 5, 1)},
      {{}, reply(0x80, 5, 0), 22, reply(0x80, 5, 0)},
      {{}, reply(0, 6, 0), 0, Data()},  // the transport says that something arrived
      {{}, {}, 1460, Data()},
  };
  for (const auto& c : cases) {
    fake.onExchange = [&](const Data&) {
      if (c.before) fake.deliver(*c.before);
      return c.last;
    };
    EXPECT_EQ(run(), c.rc);
    EXPECT_EQ(asText(response), asText(c.response));
  }
}

TEST_F(BidiTaskTest, GenericTasksRunAnyVisitorByName) {
  struct Takes : GenericBidiTask {
    using GenericBidiTask::GenericBidiTask;
    using Observer::doUpdate;
    void doUpdate(Data& data) override { response_ = data; }
  };
  Data request("ask", 3);
  fake.takeCalls();
  fake.onVisitor = [&](const std::string&, Data* data) {
    fake.deliver(Data("answer", 6));
    data->setRc(3);
    return 0u;
  };
  Takes task(printer, connection, request, response, "anyVisitor");
  EXPECT_EQ(task.execute(), 3u) << "the request's code";
  EXPECT_EQ(asText(response), "answer");
  EXPECT_THAT(fake.calls(), ElementsAre("visit anyVisitor bidi"));
  fake.onVisitor = [](const std::string&, Data*) { return 8u; };
  EXPECT_EQ(GenericBidiTask(printer, connection, request, response, "other").execute(), 8u);
  EXPECT_EQ(response.getLength(), 0u);
}

class KeptBidiTest : public KeptLog, public BidiTaskTest {};

TEST_F(KeptBidiTest, Exchanges) {
  const auto ask = [this] { gave("exchange", run()); };
  const auto askAny = [this] {
    Data request("ask");
    gave("exchange", GenericBidiTask(printer, connection, request, response, "anyVisitor").execute());
  };
  scene("replies");
  for (const Data& reply : {bytes({0xA5, 0, 6, 0, 5, 0, 0, 0, 9}), bytes({0xA5, 0, 6, 0x80, 5, 0, 0, 0, 0}),
                            bytes({0xA5, 0, 6, 0, 6, 0, 0, 0, 0})}) {
    fake.onExchange = [&](const Data&) {
      fake.deliver(reply);
      return reply;
    };
    ask();
  }
  fake.deliver(bytes({0xA5, 0, 6, 0, 5, 0, 0, 0, 1}));
  askAny();
  fake.onExchange = nullptr;
  ask();
  fake.onVisitor = [](const std::string&, Data*) { return 31u; };
  ask();
  askAny();
  printer.setBidiAllowed(false);
  ask();
  fake.onCall = [](const char* call) {
    if (call == std::string("getVisitor")) throw std::runtime_error("visitor");
    return 0u;
  };
  printer.setBidiAllowed(true);
  ask();
  askAny();
  fake.onCall = nullptr;

  expectKept("bidi", "exchanges");
}

}  // namespace
}  // namespace qvn::test
