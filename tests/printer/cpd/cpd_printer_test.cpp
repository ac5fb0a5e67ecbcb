// The states of a Cpd printer: what each operation does, in which order it asks the transport, what it
// answers.
#include <gmock/gmock.h>

#include "api/exported_call.h"
#include "device/store/printer_store.h"
#include "printer/printer_fixture.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"

namespace qvn::test {
namespace {

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
