// The exported functions of scanners and HIDs on devices of the fake transport, opened by their handles.
#include <gmock/gmock.h>

#include <atomic>

#include "device/store/hid_store.h"
#include "device/store/scanner_store.h"
#include "support/library_fixture.h"

namespace qvn::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::atomic<int> calls{0};

std::uint32_t count(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, const std::uint8_t*,
                    std::uint32_t) {
  ++calls;
  return 0;
}

const Data kStatus = bytes({0x1B, 'S', 'S', 0, 0, 0, 0, 0});

class ScannerFunctionsTest : public LibraryTest {
 protected:
  ScannerFunctionsTest() {
    ScannerStore::getInstance().persist(FakeTransport::deviceText("CpdScanner", 407, "LAB"));
    calls = 0;
  }

  std::uint32_t exchange(std::initializer_list<int> request, std::uint32_t replySize = 64) {
    Data data = bytes(request);
    return QvnExchangeDataScanner(1, 407, data.getBuffer(), data.getLength(), reply, replySize, &length);
  }

  std::uint8_t reply[64] = {};
  std::uint32_t length = 99;
};

TEST_F(ScannerFunctionsTest, AScanFromOpenToClose) {
  EXPECT_EQ(QvnStartJobScanner(1, 407, nullptr), 6u) << "the scanner must be open";
  EXPECT_EQ(QvnOpenScanner(1, 407), 0u);
  EXPECT_EQ(QvnOpenScanner(2, 407), 0u);
  fake.onExchange = [](const Data&) { return bytes({0x1B, 's', 'v', 2, 0, 0, 0, 0, 'o', 'k'}); };
  EXPECT_EQ(exchange({0x1B, 'S', 'V', 0, 0, 0, 0, 0}), 0u);
  EXPECT_EQ(asText(Data(reply, length)), std::string("\x1Bsv\2\0\0\0\0ok", 10));
  EXPECT_EQ(exchange({0x1B, 'S', 'V', 0, 0, 0, 0, 0}, 9), 122u);
  EXPECT_EQ(length, 10u);
  fake.onExchange = nullptr;
  EXPECT_EQ(exchange({0x1B, 'S', 'V', 0, 0, 0, 0, 0}), 1460u);
  EXPECT_EQ(length, 0u);

  EXPECT_EQ(QvnRegisterForAsyncDataScanner(1, 407, 0, count), 0u);
  EXPECT_EQ(QvnStartJobScanner(1, 407, nullptr), 0u);
  std::uint32_t state = 99;
  EXPECT_EQ(QvnGetCurrentStateScanner(1, 407, &state), 0u);
  EXPECT_EQ(state, 0u);
  fake.deliver(kStatus);
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(QvnCancelJobScanner(1, 407), 0u);
  EXPECT_EQ(QvnEndJobScanner(1, 407), 0u);
  EXPECT_EQ(QvnDeleteScanner(1, 407), 170u) << "in use";
  EXPECT_EQ(QvnUnregisterForAsyncDataScanner(1, 407), 0u);
  EXPECT_EQ(QvnCloseScanner(1, 407), 0u);
  fake.takeCalls();
  EXPECT_EQ(QvnCloseScanner(2, 407), 0u);
  EXPECT_THAT(fake.takeCalls(), ElementsAre("get bidi", "close bidi", "release bidi"));
  EXPECT_EQ(QvnCloseScanner(2, 407), 6u) << "live no more";
  EXPECT_EQ(QvnDeleteScanner(1, 407), 0u);
  EXPECT_EQ(QvnOpenScanner(1, 407), 6u);
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
  for (const std::uint32_t failure : {1225u, 170u}) {
    int opens = 0;
    fake.onOpen = [&](const std::string&) { return opens++ == 0 ? failure : 0u; };
    fake.takeCalls();
    EXPECT_EQ(QvnOpenScanner(1, 407), failure == 170 ? 170u : 0u);
    EXPECT_EQ(fake.calls("discoverSpecific").size(), failure == 170 ? 0u : 1u);
    QvnCloseScanner(1, 407);
  }
  fake.onOpen = [](const std::string&) { return 1225u; };
  fake.onCall = [](const char* call) {
    return std::string(call) == "discoverSpecific" && QvnDeleteScanner(1, 407) == 0 ? 2u : 0u;
  };
  EXPECT_EQ(QvnOpenScanner(1, 407), 6u) << "deleted meanwhile";
}

class HidFunctionsTest : public LibraryTest {
 protected:
  HidFunctionsTest() {
    HidStore::getInstance().persist(FakeTransport::deviceText("CpdHid", 807));
    calls = 0;
  }

  static void report(std::uint32_t, std::uint32_t, const std::uint8_t*, std::uint32_t) { ++calls; }
  static void event(std::uint32_t, std::uint32_t, std::uint32_t, const std::uint8_t*, std::uint32_t,
                    std::uint32_t) {
    ++calls;
  }
};

TEST_F(HidFunctionsTest, ReportsAndEventsFromOpenToClose) {
  EXPECT_EQ(QvnRegisterForReportsHid(1, 807, report), 6u) << "the HID must be open";
  EXPECT_EQ(QvnRegisterForNotificationsHid(1, 807, event), 0u) << "not for this";
  EXPECT_EQ(QvnOpenHid(1, 807), 0u);
  EXPECT_EQ(QvnRegisterForReportsHid(1, 807, report), 0u);
  fake.deliver(bytes({2, 1}));
  EXPECT_EQ(calls, 1);
  Notification notification;
  notification.category = 2;
  notification.id = 12;
  fake.deliver(notification);
  EXPECT_EQ(calls, 2);
  std::uint32_t state = 0;
  EXPECT_EQ(QvnGetCurrentStateHid(1, 807, &state), 0u);
  EXPECT_EQ(state, 12u);
  EXPECT_EQ(QvnUnregisterForReportsHid(1, 807), 0u);
  EXPECT_EQ(QvnUnregisterForNotificationsHid(1, 807), 0u);
  fake.deliver(bytes({2, 1}));
  EXPECT_EQ(calls, 2);
  EXPECT_EQ(QvnDeleteHid(1, 807), 170u);
  EXPECT_EQ(QvnCloseHid(1, 807), 0u);
  EXPECT_EQ(QvnUnregisterForReportsHid(1, 807), 0u) << "live no more, and that is all right";
  EXPECT_EQ(QvnDeleteHid(1, 807), 0u);
}

TEST_F(HidFunctionsTest, ADeviceThatSomebodyElseHasIsNotLookedFor) {
  for (const std::uint32_t code : {52u, 170u}) {
    fake.onOpen = [=](const std::string&) { return code; };
    EXPECT_EQ(QvnOpenHid(1, 807), code);
  }
  EXPECT_THAT(fake.calls("discoverSpecific"), IsEmpty());
}

}  // namespace
}  // namespace qvn::test
