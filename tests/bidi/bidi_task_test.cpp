#include "bidi/bidi_task.h"

#include <gmock/gmock.h>

#include "bidi/generic_bidi_task.h"
#include "common/logging/log_text.h"
#include "npa/job_commands.h"
#include "printer/cpd/cpd_printer.h"
#include "support/kept_log/kept_log.h"
#include "support/library_fixture.h"

namespace qvn::test {
namespace {

class KeptBidiTest : public KeptLog, public LibraryTest {
 protected:
  KeptBidiTest() {
    printer.setAttributes(FakeTransport::printerText(7));
    printer.setBidiAllowed(true);
    connection = printer.doGetConnection("bidi");
  }

  void ask() {
    const std::uint32_t rc = BidiTask(printer, connection, StartJobCommand().packet(), response).execute();
    gave((LogText() << "exchange for ").hex(response).str(), rc);
  }
  template <typename Task = GenericBidiTask>
  void askAny() {
    Data request("ask");
    const std::uint32_t rc = Task(printer, connection, request, response, "anyVisitor").execute();
    gave((LogText() << "exchange for ").hex(response).str(), rc);
  }

  CpdPrinter printer;
  Connection connection;
  Data response{"old", 3};
};

struct TakingTask : GenericBidiTask {
  using GenericBidiTask::GenericBidiTask;
  using Observer::doUpdate;
  void doUpdate(Data& data) override { response_ = data; }
};

TEST_F(KeptBidiTest, Exchanges) {
  scene("replies");
  const auto reply = [](int flags, int code, int id) {
    return bytes({0xA5, 0, 6, flags, code, 0, 0, 0, id});
  };
  for (const auto& [first, last] : {std::pair(reply(0, 5, 1), reply(0, 5, 2)),
                                    {reply(0x80, 5, 0), reply(0x80, 5, 0)},
                                    {reply(0, 6, 0), reply(0, 6, 0)}}) {
    fake.onExchange = [&, first = first, last = last](const Data&) {
      fake.deliver(first);
      return last;
    };
    ask();
  }
  fake.deliver(bytes({0xA5, 0, 6, 0, 5, 0, 0, 0, 1}));
  askAny();
  fake.onVisitor = [&](const std::string&, Data* data) {
    fake.deliver(Data("answer"));
    data->setRc(3);
    return 0u;
  };
  askAny<TakingTask>();
  fake.onVisitor = nullptr;
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
