// An exchange with an object store: which reply it takes, what it answers, and that it ends when it is told
// to.
#include "bidi/object_store/object_store_bidi_task.h"

#include <gtest/gtest.h>

#include <thread>

#include "bidi/object_store/reply_frame.h"
#include "device/scanner.h"
#include "support/kept_log/kept_log.h"
#include "support/library_fixture.h"
#include "support/store_documents.h"

namespace qvn::test {
namespace {

constexpr std::uint32_t kId = 1002;

std::string framed(int first, std::uint32_t length, const std::string& payload) {
  std::string frame(8, '\0');
  frame[0] = static_cast<char>(first);
  for (std::size_t i = 0; i < 4; ++i) frame[4 + i] = static_cast<char>(length >> (24 - 8 * i));
  return frame + payload;
}

// Any device does: the task only wants a subject with a transport.
class ObjectStoreTaskTest : public LibraryTest {
 protected:
  class Store : public Scanner {
   public:
    void doAccept(Data& data) override { notify(data); }
    using Scanner::doAccept;
  };

  ObjectStoreTaskTest() {
    device.setAttributes(FakeTransport::deviceText("BpdScanner", 407));
    connection = device.doGetConnection("bidi");
    fake.takeCalls();
  }

  ObjectStoreBidiTask makeTask() { return {device, connection, kId, "<?xml?>", answer}; }

  Store device;
  Connection connection;
  std::string answer = "old";
};

TEST(ReplyFrame, IsTakenOffWhenThereIsOne) {
  const struct {
    std::string reply;
    std::string payload;
  } rows[] = {
      {framed(0xAA, 3, "abc"), "abc"},
      {framed(0xFF, 2, "abc"), "ab"},
      {framed(0xBB, 0xFFFFFFFF, "abc"), "abc"},
      {framed(0xCC, 0, "abc"), ""},
      {framed(0xA9, 3, "abc"), framed(0xA9, 3, "abc")},
      {framed(0xDD, 3, ""), ""},
      {framed(0xEE, 3, "").substr(0, 7), framed(0xEE, 3, "").substr(0, 7)},
      {"<?xml", "<?xml"},
      {"", ""},
  };
  for (const auto& row : rows) EXPECT_EQ(unwrapReply(row.reply), row.payload) << row.reply;
}

TEST_F(ObjectStoreTaskTest, TakesTheReplyWithItsRequestId) {
  const std::string reply = response(kId, number(7));
  const struct {
    const char* what;
    std::string delivered;
    std::uint32_t rc;
    std::string answer;
  } rows[] = {
      {"bare", reply, 0, reply},
      {"framed", framed(0xAA, static_cast<std::uint32_t>(reply.size()), reply), 0, reply},
      {"framed, the length too large", framed(0xEE, 100000, reply), 0, reply},
      {"an exception", exception(kId), 87, exception(kId)},
      {"another request's", response(kId - 1, number(7)), 0, ""},
      {"another request's exception", exception(kId - 1), 0, ""},
      {"a method with that id", declared("<method name=\"x\" requestID=\"1002\"></method>"), 0, ""},
      {"not well-formed", reply.substr(0, reply.size() - 3) + "<<<", 0, ""},
      {"too long", response(kId, text(std::string(10000, 'x'))), 0, ""},
      {"no document", "<Scan.Data>", 0, ""},
      {"nothing", "", 0, ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    fake.onExchange = [&](const Data& request) {
      EXPECT_EQ(asText(request), "<?xml?>");
      return Data(row.delivered);
    };
    EXPECT_EQ(makeTask().execute(), row.rc);
    EXPECT_EQ(answer, row.answer);
  }
}

TEST_F(ObjectStoreTaskTest, InTheBackgroundTheCallerDoesNotWait) {
  fake.awaitsReplies = true;
  {
    ObjectStoreBidiTask task = makeTask();
    EXPECT_EQ(task.shutdownThread(), 0u) << "nothing runs";
    EXPECT_EQ(task.executeBackground(), 0u);
    task.executeBackground();  // the first one is ended
    fake.awaitsReplies = false;
    task.shutdownThread();
    // Forced ends are over when the call is: nobody is attached.
    answer = "kept";
    fake.deliver(Data(response(kId, number(1))));
    EXPECT_EQ(answer, "kept");
    fake.takeCalls();
    task.executeBackground();  // the task can be used again
    while (fake.calls("store").empty()) std::this_thread::yield();
  }
}

TEST_F(ObjectStoreTaskTest, ACancelEndsTheExchangeWhenverItComes) {
  fake.awaitsReplies = true;
  {
    ObjectStoreBidiTask task = makeTask();
    task.cancel();
    EXPECT_EQ(task.execute(), 1236u) << "before";
    failCalls("getVisitor", 31);
    EXPECT_EQ(task.execute(), 1u) << "with nothing to cancel";
    fake.onCall = nullptr;
    fake.takeCalls();
    task.executeBackground();
    while (fake.calls("cancel").empty()) std::this_thread::yield();
  }
  ObjectStoreBidiTask task = makeTask();
  fake.onExchange = [&](const Data&) -> std::optional<Data> {
    std::thread([&] { task.cancel(); }).join();
    return std::nullopt;
  };
  EXPECT_EQ(task.execute(), 1236u) << "meanwhile";
}

class KeptObjectStoreTest : public KeptLog, public ObjectStoreTaskTest {};

TEST_F(KeptObjectStoreTest, Exchanges) {
  scene("replies");
  const auto ask = [this] {
    const std::uint32_t rc = makeTask().execute();
    gave("exchange for '" + answer + "'", rc);
  };
  for (const std::string& reply : {response(kId, number(7)), exception(kId), response(kId - 1, number(7))}) {
    fake.onExchange = [&](const Data&) { return Data(reply); };
    ask();
  }
  fake.onExchange = [&](const Data&) {
    fake.deliver(Data("<Scan.Data>in between"));
    fake.deliver(Data(response(kId, number(1))));
    return Data(response(kId, number(2)));
  };
  ask();
  fake.deliver(Data(response(kId, number(3))));
  heard("'" + answer + "' after a late one");
  fake.onExchange = nullptr;
  ask();
  fake.onVisitor = [](const std::string&, Data*) { return 64u; };
  ask();
  fake.onVisitor = nullptr;

  scene("cancelled before, and in the background");
  fake.awaitsReplies = true;
  {
    ObjectStoreBidiTask task = makeTask();
    task.cancel();
    gave("exchange", task.execute());
  }
  ObjectStoreBidiTask task = makeTask();
  const std::size_t sent = fake.calls("store").size();
  besideOthers([&] {
    gave("background", task.executeBackground());
    while (fake.calls("store").size() == sent) std::this_thread::yield();
  });
  besideOthers([&] { gave("shutdown", task.shutdownThread()); });

  expectKept("bidi/object_store", "exchanges");
}

}  // namespace
}  // namespace qvn::test
