// The exported functions of scanners and HIDs on devices of the fake transport, opened by their handles.
#include <gmock/gmock.h>

#include "device/store/hid_store.h"
#include "device/store/printer_store.h"
#include "device/store/scanner_store.h"
#include "support/library_fixture.h"

namespace qvn::test {
namespace {

class ScannerFunctionsTest : public LibraryTest {
 protected:
  ScannerFunctionsTest() {
    ScannerStore::getInstance().persist(FakeTransport::deviceText("CpdScanner", 407, "LAB"));
  }

  std::uint32_t exchange(std::initializer_list<int> request, std::uint32_t replySize = 64) {
    Data data = bytes(request);
    return QvnExchangeDataScanner(1, 407, data.getBuffer(), data.getLength(), reply, replySize, &length);
  }

  std::uint8_t reply[64] = {};
  std::uint32_t length = 99;
};

TEST_F(ScannerFunctionsTest, AReplyThatDoesNotFitTellsItsLength) {
  ASSERT_EQ(QvnOpenScanner(1, 407), 0u);
  fake.onExchange = [](const Data&) { return bytes({0x1B, 's', 'v', 2, 0, 0, 0, 0, 'o', 'k'}); };
  EXPECT_EQ(exchange({0x1B, 'S', 'V', 0, 0, 0, 0, 0}), 0u);
  EXPECT_EQ(asText(Data(reply, length)), std::string("\x1Bsv\2\0\0\0\0ok", 10));
  EXPECT_EQ(exchange({0x1B, 'S', 'V', 0, 0, 0, 0, 0}, 9), 122u);
  EXPECT_EQ(length, 10u);
  fake.onExchange = nullptr;
  EXPECT_EQ(exchange({0x1B, 'S', 'V', 0, 0, 0, 0, 0}), 1460u);
  EXPECT_EQ(length, 0u);
  QvnCloseScanner(1, 407);
}

TEST_F(ScannerFunctionsTest, AJobParameterIsSentAsATextOfTwoTags) {
  ASSERT_EQ(QvnOpenScanner(1, 407), 0u);
  EXPECT_EQ(QvnSetJobStringScanner(1, 407, "Resolution", "300"), 0u);
  EXPECT_EQ(QvnSetJobStringScanner(1, 407, "Resolution", "600</1>"), 87u) << "would be cut";
  EXPECT_EQ(QvnSetJobStringScanner(1, 407, "</0>", "600"), 87u);
  EXPECT_EQ(QvnSetJobLongScanner(1, 407, "Last", 4294967295u), 0u);
  EXPECT_THAT(fake.written(), testing::EndsWith("<0>Resolution</0><1>300</1><0>Last</0><1>-1</1>"));
  QvnCloseScanner(1, 407);
}

TEST_F(ScannerFunctionsTest, AFailedOpenIsTriedAgainAfterLookingForTheDevice) {
  PrinterStore::getInstance().persist(FakeTransport::printerText(7));
  HidStore::getInstance().persist(FakeTransport::deviceText("CpdHid", 807));
  const struct {
    std::uint32_t handle;
    std::uint32_t (*open)(std::uint32_t, std::uint32_t);
    std::uint32_t (*close)(std::uint32_t, std::uint32_t);
    std::uint32_t (*remove)(std::uint32_t, std::uint32_t);
  } kinds[] = {{7, QvnOpenPrinter, QvnClosePrinter, QvnDeletePrinter},
               {407, QvnOpenScanner, QvnCloseScanner, QvnDeleteScanner},
               {807, QvnOpenHid, QvnCloseHid, QvnDeleteHid}};
  for (const auto& kind : kinds) {
    SCOPED_TRACE(kind.handle);
    int failures = 0;
    std::uint32_t failure = 0;
    fake.onOpen = [&](const std::string&) { return failures-- > 0 ? failure : 0u; };
    const auto open = [&](std::uint32_t code, int times) {
      failure = code;
      failures = times;
      fake.takeCalls();
      return kind.open(1, kind.handle);
    };
    EXPECT_EQ(open(1225, 1), 0u);
    EXPECT_EQ(fake.calls("discoverSpecific").size(), 1u);
    EXPECT_EQ(kind.close(1, kind.handle), 0u);
    EXPECT_EQ(open(1460, 2), 1460u);
    EXPECT_EQ(kind.close(1, kind.handle), 6u) << "no reference is left";
    for (const std::uint32_t taken : {kind.handle == 807 ? 52u : 170u, 170u}) {
      EXPECT_EQ(open(taken, 1), taken) << "final: somebody else has it";
      EXPECT_EQ(fake.calls("discoverSpecific").size(), 0u);
    }
    fake.onCall = [&](const char* call) {
      return std::string(call) == "discoverSpecific" && kind.remove(1, kind.handle) == 0 ? 2u : 0u;
    };
    EXPECT_EQ(open(1225, 2), 6u) << "deleted meanwhile";
    fake.onCall = nullptr;
  }
}

}  // namespace
}  // namespace qvn::test
