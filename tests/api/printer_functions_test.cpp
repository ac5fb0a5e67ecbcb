#include <gmock/gmock.h>

#include <future>
#include <thread>

#include "device/store/printer_store.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "support/library_fixture.h"
#include "support/manual_clock.h"

namespace qvn::test {
namespace {

using testing::ElementsAre;

class PrinterFunctionsTest : private SkippingClock, public LibraryTest {
 protected:
  PrinterFunctionsTest() {
    std::string text = FakeTransport::printerText(7, "LAB12");
    AttributeCodec::setByteArray(text, attribute::kNpaRevisionLevel, bytes({1, 0xAB}).getBuffer(), 2);
    PrinterStore::getInstance().persist(text);
    fake.onExchange = [](const Data&) { return bytes({0xA5, 0, 6, 0, 5, 0, 0, 0, 5}); };
    set("CpdPrinterMwo", 0);
    set("TeojDuration", 0);
  }

  std::uint32_t write(std::uint32_t client, const std::string& text) {
    return QvnWritePrinter(client, 7, reinterpret_cast<const std::uint8_t*>(text.data()),
                           static_cast<std::uint32_t>(text.size()), &written);
  }
  std::uint32_t start(std::uint32_t client) { return QvnStartJobPrinter(client, 7, 1, "q", "h", "j", "u"); }

  std::uint32_t written = 0;
};

TEST_F(PrinterFunctionsTest, TextsFollowTheBufferRule) {
  char buffer[16];
  std::uint32_t required = 0;
  const char* const key = attribute::kPortname;
  EXPECT_EQ(QvnGetStringPrinter(1, 7, key, buffer, 5, &required), 122u);
  EXPECT_EQ(required, 6u);
  EXPECT_STREQ(buffer, "");
  EXPECT_EQ(QvnGetStringPrinter(1, 7, key, buffer, 6, &required), 0u);
  EXPECT_EQ(required, 6u);
  EXPECT_STREQ(buffer, "LAB12");

  std::uint8_t wide[12];
  EXPECT_EQ(QvnGetWideStringPrinter(1, 7, key, wide, 11, &required), 122u);
  EXPECT_EQ(required, 12u);
  EXPECT_EQ(QvnGetWideStringPrinter(1, 7, key, wide, 12, &required), 0u);
  EXPECT_THAT(wide, ElementsAre('L', 0, 'A', 0, 'B', 0, '1', 0, '2', 0, 0, 0));

  std::uint8_t array[2] = {};
  EXPECT_EQ(QvnGetByteArrayPrinter(1, 7, attribute::kNpaRevisionLevel, array, 0, &required), 122u);
  EXPECT_EQ(required, 2u);
  EXPECT_EQ(QvnGetByteArrayPrinter(1, 7, attribute::kNpaRevisionLevel, array, 2, &required), 0u);
  EXPECT_THAT(array, ElementsAre(1, 0xAB));

  std::uint32_t value = 5;
  EXPECT_EQ(QvnGetLongPrinter(1, 7, key, &value), 1629u);
  EXPECT_EQ(value, 0u);
  EXPECT_EQ(QvnGetLongPrinter(1, 7, attribute::kHandle, &value), 0u);
  EXPECT_EQ(value, 7u);
}

TEST_F(PrinterFunctionsTest, TheLastCloseEndsTheJobOfAClientThatDoesNotHaveThePrinterOpen) {
  for (const std::uint32_t buffered : {0u, 1u}) {
    set("CpdPrinterMwo", buffered);
    EXPECT_EQ(QvnOpenPrinter(1, 7), 0u);
    EXPECT_EQ(start(2), 0u);
    EXPECT_EQ(write(2, "half a job"), 0u);
    EXPECT_EQ(write(2, "more of it"), 0u);
    fake.takeCalls();
    EXPECT_EQ(QvnClosePrinter(1, 7), 0u);
    EXPECT_EQ(fake.calls("close print").size(), 1u);
    EXPECT_EQ(fake.calls("close bidi").size(), 1u);
    EXPECT_EQ(QvnDeletePrinter(1, 7), 0u) << "nothing holds it";
    PrinterStore::getInstance().persist(FakeTransport::printerText(7, "LAB12"));
  }
}

TEST_F(PrinterFunctionsTest, ARemovedTransportStaysUntilNothingUsesIt) {
  EXPECT_EQ(QvnOpenPrinter(1, 7), 0u);
  EXPECT_EQ(QvnRemoveTransport(FakeTransport::module()), 0u);
  EXPECT_EQ(fake.calls("uninitialize").size(), 0u);
  EXPECT_EQ(QvnClosePrinter(1, 7), 0u);
  EXPECT_EQ(QvnOpenPrinter(1, 7), 1u) << "it has no transport any more";
  EXPECT_EQ(QvnUninitialize(), 0u);
  EXPECT_THAT(fake.calls(), testing::IsSupersetOf({"close bidi", "uninitialize"}));
  EXPECT_EQ(QvnInitialize(), 0u);
}

TEST_F(PrinterFunctionsTest, ACancelFromAnotherThreadTakesEffectAfterTheWrite) {
  ASSERT_EQ(QvnOpenPrinter(1, 7), 0u);
  EXPECT_EQ(QvnCancelJobPrinter(1, 7), 0u) << "no job: no effect";
  ASSERT_EQ(start(1), 0u);
  EXPECT_EQ(write(1, "one"), 0u);
  std::promise<void> writing;
  std::promise<void> goOn;
  fake.onWrite = [&](Data& data) {
    writing.set_value();
    goOn.get_future().wait();
    data.setRc(64);
    data.setCount(2);
  };
  std::thread writer([&] {
    EXPECT_EQ(write(1, "three"), 0u) << "the cancel's result replaces the write's";
    EXPECT_EQ(written, 2u);
  });
  writing.get_future().wait();
  EXPECT_EQ(QvnCancelJobPrinter(2, 7), 0u);
  goOn.set_value();
  writer.join();
  EXPECT_THAT(fake.calls("visit flush"), ElementsAre("visit flushPrintBufferVisitor print"));
  fake.onWrite = [](Data& data) { data.setRc(64); };
  EXPECT_EQ(QvnEndJobPrinter(1, 7), 0u);
  fake.onWrite = nullptr;
  ASSERT_EQ(start(1), 0u);
  EXPECT_EQ(write(1, "new"), 0u) << "the mark went with the job";
}

TEST_F(PrinterFunctionsTest, ExchangesAreFilteredAndBounded) {
  const auto exchange = [](const Data& packet, std::uint8_t* reply, std::uint32_t size,
                           std::uint32_t* length) {
    return QvnExchangeNpaPrinter(1, 7, packet.getBuffer(), packet.getLength(), reply, size, length);
  };
  std::uint8_t reply[32] = {};
  std::uint32_t length = 99;
  ASSERT_EQ(QvnOpenPrinter(1, 7), 0u);
  EXPECT_EQ(exchange(bytes({0xA5, 0, 6, 0x50, 5, 0, 0, 0, 0}), reply, 32, &length), 5u);
  EXPECT_EQ(length, 99u);
  fake.onExchange = [](const Data&) { return bytes({0xA5, 0, 3, 0, 1, 0}); };
  const Data summary = bytes({0xA5, 0, 3, 0x50, 1, 0});
  EXPECT_EQ(exchange(summary, reply, 32, &length), 0u);
  EXPECT_EQ(length, 6u);
  EXPECT_EQ(reply[4], 1);
  EXPECT_EQ(exchange(summary, reply, 5, &length), 122u);
  EXPECT_EQ(length, 6u);
  fake.onExchange = [](const Data&) { return bytes({0xA5, 0, 3, 0x80, 1, 0}); };
  EXPECT_EQ(exchange(summary, reply, 32, &length), 22u);
  EXPECT_EQ(length, 0u);
}

TEST_F(PrinterFunctionsTest, SettingAnAttributeReadsNotBeyondItsText) {
  EXPECT_EQ(QvnSetStringPrinter(1, 7, attribute::kPortname, "ABCDEF", 3), 0u);
  char buffer[16];
  std::uint32_t required = 0;
  EXPECT_EQ(QvnGetStringPrinter(1, 7, attribute::kPortname, buffer, 16, &required), 0u);
  EXPECT_STREQ(buffer, "ABC");
  EXPECT_EQ(QvnSetStringPrinter(1, 7, attribute::kPortname, "X", 4000000000u), 0u);
  EXPECT_EQ(QvnSetStringPrinter(1, 7, attribute::kPortname, "X</Portname>", 12), 87u);
  EXPECT_EQ(QvnSetLongPrinter(1, 7, attribute::kHandle, 8), 87u);
  EXPECT_EQ(QvnSetLongPrinter(1, 7, attribute::kTrueEndOfJob, 1), 0u);
  EXPECT_EQ(QvnSetByteArrayPrinter(1, 7, attribute::kNpaRevisionLevel, bytes({9}).getBuffer(), 1), 0u);
}

}  // namespace
}  // namespace qvn::test
