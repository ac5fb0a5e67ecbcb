// The states of a Cpd printer: what each operation does, in which order it asks the transport, what it
// answers.
#include <gmock/gmock.h>

#include "api/exported_call.h"
#include "device/store/printer_store.h"
#include "npa/job_commands.h"
#include "printer/printer_fixture.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"

namespace qvn::test {
namespace {

using testing::IsEmpty;

TEST_F(CpdPrinterTest, AJobHasItsDataWrittenAndABlankForNoUser) {
  startJob();
  EXPECT_EQ(printer->jobDescription().request().userName, " ");
  EXPECT_EQ(print("data"), 0u);
  EXPECT_EQ(print("more" + marker()), 0u);
  EXPECT_EQ(fake.written(), "datamore" + marker());
}

TEST_F(CpdPrinterTest, AFailedWriteIsAnErrorUntilAWriteSucceeds) {
  startJob();
  std::uint32_t rc = 64;
  fake.onWrite = [&](Data& data) {
    data.setRc(rc);
    data.setCount(rc == 0 ? data.getLength() : 1);
  };
  std::uint32_t state = 0;
  Data data("abc", 3);
  EXPECT_EQ(printer->doPrint(data), 64u);
  EXPECT_EQ(data.getCount(), 1u);
  EXPECT_EQ(asText(data), "bc") << "what was not taken";
  printer->doGetCurrentState(state);
  EXPECT_EQ(state, 2u);

  rc = 122;
  const std::uint64_t slept = clock.totalSlept();
  EXPECT_EQ(print("x"), 122u);
  EXPECT_EQ(clock.totalSlept() - slept, 1000u);
  rc = 64;
  EXPECT_EQ(print("x"), 64u);
  EXPECT_EQ(clock.totalSlept() - slept, 1000u);
  rc = 0;
  EXPECT_EQ(print("x"), 0u);
  printer->doGetCurrentState(state);
  EXPECT_EQ(state, 1u);

  fake.onWrite = [](Data& offered) {
    offered.setCount(2);
    throw 5;
  };
  Data thrown("abc", 3);
  EXPECT_EQ(printer->doPrint(thrown), 1359u);
  EXPECT_EQ(thrown.getCount(), 0u) << "what it counted before is void";
  EXPECT_EQ(printer->doEndJob(), 0u) << "an error can be ended";
  EXPECT_EQ(printer->doStartJob({}), 0u);
  print("x");
  EXPECT_EQ(printer->doCancelPrint(), 0u) << "or cancelled";
}

TEST_F(CpdPrinterTest, TheMarkerAllowsExchangesAndTheNextDataForbidsThem) {
  startJob();
  const struct {
    std::string data;
    bool allowed;
  } cases[] = {
      {"x" + marker(), true},      {"x", false}, {marker(), true}, {marker() + "x", false},
      {marker().substr(1), false},
  };
  for (const auto& c : cases) {
    print(c.data);
    EXPECT_EQ(printer->isBidiAllowed(), c.allowed);
    EXPECT_EQ(printer->jobDescription().isComplete(), c.allowed);
  }
}

TEST_F(CpdPrinterTest, TheCacheIsAnsweredFromMemoryWhilePrinting) {
  GetCacheCommand command;
  Data response(1024, 0xFF);
  printer->doOpen();
  set("CpdPrinterMwo", 0);
  printer->doStartJob({});
  EXPECT_EQ(printer->doExchangeNpa(command.packet(), response), 1u) << "nothing is held yet";
  print(marker());
  printer->doEndJob();
  EXPECT_EQ(printer->doExchangeNpa(command.packet(), response), 0u);
  EXPECT_EQ(asText(response), asText(*cacheReply));

  printer->doStartJob({});
  Data held(1024, 0xFF);
  EXPECT_EQ(printer->doExchangeNpa(command.packet(), held), 0u);
  EXPECT_EQ(held.getLength(), cacheReply->getLength());
  EXPECT_EQ(held.getBuffer()[18], 0x01) << "a job is open";
  Data tooSmall(5, 0xFF);
  EXPECT_EQ(printer->doExchangeNpa(command.packet(), tooSmall), 0u);
  EXPECT_EQ(tooSmall.getLength(), 5u);

  Data cache(1024, 0xFF);
  fake.onVisitor = [](const std::string& visitor, Data*) { return visitor == "cacheVisitor" ? 1u : 0u; };
  EXPECT_EQ(printer->doGetCache(cache), 0u);
  EXPECT_EQ(cache.getLength(), cacheReply->getLength() - 8) << "without the NPA header";
  EXPECT_EQ(cache.getBuffer()[0], 0);
}

TEST_F(CpdPrinterTest, TheCacheChannelOfTheTransportComesFirst) {
  fake.onVisitor = [&](const std::string& visitor, Data*) {
    if (visitor == "cacheVisitor") fake.deliver(*cacheReply);
    return 0u;
  };
  Data cache(1024, 0xFF);
  EXPECT_EQ(printer->doGetCache(cache), 0u);
  EXPECT_EQ(cache.getLength(), cacheReply->getLength() - 8);
  Data tooSmall(10, 0xFF);
  EXPECT_EQ(printer->doGetCache(tooSmall), 1460u);
  fake.onVisitor = nullptr;
  EXPECT_EQ(printer->doGetCache(cache), 1460u) << "the channel says nothing";
  EXPECT_THAT(fake.calls("open"), IsEmpty());
}

std::function<void(std::uint32_t id)> duringNotification;
void onNotification(std::uint32_t, std::uint32_t, std::uint32_t id, const std::uint8_t*, std::uint32_t,
                    std::uint32_t) {
  duringNotification(id);
}

TEST_F(CpdPrinterTest, AttributesThatChangeWhileTheTransportIsToldOfAnotherOneStay) {
  PrinterStore::getInstance().persist(FakeTransport::printerText(7));
  fake.onVisitor = [this](const std::string& name, Data*) {
    if (name != attribute::kTrueEndOfJob) return 0u;
    return printer->changeAttributes([](std::string& text) {
      return AttributeCodec::setLong(text, attribute::kMaxWritePacketSize, 4128);
    });
  };
  EXPECT_EQ(printer->setLong(attribute::kTrueEndOfJob, 1), 0u);
  std::string stored;
  PrinterStore::getInstance().read(7, stored);
  EXPECT_EQ(stored, printer->getAttributes());
  for (const auto& [key, value] :
       {std::pair{attribute::kTrueEndOfJob, 1u}, {attribute::kMaxWritePacketSize, 4128u}}) {
    std::uint32_t number = 0;
    EXPECT_EQ(AttributeCodec::getLong(stored, key, number), 0u);
    EXPECT_EQ(number, value);
  }
}

TEST_F(CpdPrinterTest, ANotificationCannotChangeWhatItReportsOn) {
  Data data("nested", 6);
  int notifications = 0;
  int nested = 0;
  fake.onVisitor = [](const std::string& name, Data*) { return name == "cacheVisitor" ? 1u : 0u; };
  duringNotification = [&](std::uint32_t id) {
    ++notifications;
    const bool isClosing = notifications % 8 == 0;
    EXPECT_EQ(guardedCall([&] { return printer->doOpen(); }), isClosing ? 170u : 0u)
        << "counts, once it is open";
    if (!isClosing) ++nested;
    EXPECT_EQ(guardedCall([&] { return printer->doStartJob({}); }), 170u);
    EXPECT_EQ(guardedCall([&] { return printer->doPrint(data); }), 170u);
    EXPECT_EQ(guardedCall([&] { return printer->doCancelPrint(); }), 170u);
    EXPECT_EQ(guardedCall([&] { return printer->doEndJob(); }), 170u);
    EXPECT_EQ(guardedCall([&] { return printer->doGetCache(data); }), 170u) << "opens and closes";
    std::uint32_t state = 0;
    EXPECT_EQ(printer->doGetCurrentState(state), 0u) << "may be asked";
    EXPECT_TRUE(id > 3 || state == id) << "already what is told";
  };
  printer->doRegisterForNotifications({1, 1, Data(), onNotification});
  for (const std::uint32_t buffered : {0u, 1u}) {
    set("CpdPrinterMwo", buffered);
    EXPECT_EQ(printer->doOpen(), 0u);
    EXPECT_EQ(printer->doStartJob({}), 0u);
    EXPECT_EQ(print("some"), 0u);
    EXPECT_EQ(print(marker()), 0u);
    EXPECT_EQ(printer->doEndJob(), 0u);
    for (++nested; nested > 0; --nested) EXPECT_EQ(printer->doClose(), 0u);
  }
  EXPECT_EQ(notifications, 2 * 8) << "open, start, busy, first data, end, true end, open, closed";
  EXPECT_EQ(fake.written(), "some" + marker() + "some" + marker());
}

}  // namespace
}  // namespace qvn::test
