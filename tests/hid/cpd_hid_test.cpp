// A Cpd HID's states, and who hears its reports and events.
#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "common/exception.h"
#include "common/logging/log_text.h"
#include "hid/cpd_hid.h"
#include "hid/hid_notification_manager.h"
#include "hid/hid_report_manager.h"
#include "support/kept_log/kept_log.h"
#include "support/library_fixture.h"

namespace qvn::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> heard;

void report(std::uint32_t clientId, std::uint32_t handle, const std::uint8_t* bytes, std::uint32_t length) {
  EXPECT_EQ(handle, 807u);
  heard.push_back(std::to_string(clientId) + ":" + std::string(reinterpret_cast<const char*>(bytes), length));
}

void event(std::uint32_t handle, std::uint32_t category, std::uint32_t id, const std::uint8_t* data,
           std::uint32_t length, std::uint32_t clientId) {
  EXPECT_EQ(handle, 807u);
  EXPECT_EQ(category, 2u);
  EXPECT_EQ(data, nullptr);
  EXPECT_EQ(length, 0u);
  heard.push_back(std::to_string(clientId) + ":" + std::to_string(id));
}

class CpdHidTest : public LibraryTest {
 protected:
  CpdHidTest() {
    heard.clear();
    hid->setAttributes(FakeTransport::deviceText("CpdHid", 807));
  }

  void send(std::uint32_t id, std::uint32_t category = 2) {
    Notification notification;
    notification.category = category;
    notification.id = id;
    fake.deliver(notification);
  }
  std::uint32_t state() {
    std::uint32_t value = 99;
    EXPECT_EQ(hid->doGetCurrentState(value), 0u);
    return value;
  }
  static void registerReports(std::uint32_t clientId, QvnHidReportCallback callback = report) {
    EXPECT_EQ(HidReportManager::getInstance().registerForReports(807, {clientId, callback}), 0u);
  }
  static void registerEvents(std::uint32_t clientId, QvnNotificationCallback callback = event,
                             std::uint32_t category = 2) {
    EXPECT_EQ(
        HidNotificationManager::getInstance().registerClient(807, {clientId, category, Data(), callback}),
        0u);
  }

  std::unique_ptr<CpdHid> hid = std::make_unique<CpdHid>();
};

TEST_F(CpdHidTest, OpensConnectOnceAndAskTheTransportForMore) {
  EXPECT_EQ(hid->doClose(), 0u) << "not open";
  EXPECT_EQ(hid->doRegisterForReports({1, report}), 1u);
  EXPECT_EQ(hid->doUnregisterForReports(1), 1u);
  EXPECT_EQ(hid->doOpen(), 0u);
  EXPECT_THAT(fake.takeCalls(), ElementsAre("initialize", "get alert", "open alert", "release alert"));
  EXPECT_EQ(hid->doRegisterForReports({1, report}), 0u);
  EXPECT_EQ(hid->doUnregisterForReports(1), 0u);
  for (const std::uint32_t agreed : {0u, 1u}) {
    fake.onVisitor = [=](const std::string&, Data*) { return agreed; };
    EXPECT_EQ(hid->doOpen(), 0u);
    EXPECT_THAT(fake.takeCalls(), ElementsAre("get alert", "visit openHidVisitor alert", "release alert"));
  }
  EXPECT_EQ(hid->openCount(), 3u);
  fake.onVisitor = [](const std::string&, Data*) { return 64u; };
  EXPECT_EQ(hid->doOpen(), 64u);
  EXPECT_EQ(hid->openCount(), 3u) << "not counted";
  fake.takeCalls();
  EXPECT_EQ(hid->doClose(), 0u);
  EXPECT_EQ(hid->doClose(), 0u);
  EXPECT_THAT(fake.takeCalls(), IsEmpty());
  EXPECT_EQ(hid->doOnConnectionLost(), 0u) << "changes nothing";
  EXPECT_EQ(hid->doClose(), 0u);
  EXPECT_THAT(fake.takeCalls(), ElementsAre("get alert", "close alert", "release alert"));
  fake.onOpen = [](const std::string&) { return 1225u; };
  EXPECT_EQ(hid->doOpen(), 1225u);
  EXPECT_EQ(hid->doRegisterForReports({1, report}), 1u) << "closed again";
}

TEST_F(CpdHidTest, ReportsReachEveryClientButForTheNullReport) {
  hid->doOpen();
  registerReports(9);
  registerReports(2);
  registerReports(9, [](auto...) { FAIL(); });
  const Data pressed = bytes({1, 1, 0, 0, 0, 0, 0, 1});
  const Data longer = bytes({1, 1, 0, 0, 0, 0, 0, 0, 0});
  for (const Data& data : {Data(), bytes({1, 1, 0, 0, 0, 0, 0, 0}), pressed, longer}) fake.deliver(data);
  EXPECT_THAT(heard, ElementsAre("9:" + asText(pressed), "2:" + asText(pressed), "9:" + asText(longer),
                                 "2:" + asText(longer)));
  heard.clear();
  for (int i = 0; i < 2; ++i) HidReportManager::getInstance().unregisterForReports(807, 9);
  fake.deliver(pressed);
  EXPECT_THAT(heard, ElementsAre("2:" + asText(pressed)));
}

TEST_F(CpdHidTest, AnEventIsHeardWhenItIsAnother) {
  hid->doOpen();
  send(7);
  EXPECT_EQ(state(), 7u) << "nobody need be registered";
  registerEvents(1);
  registerEvents(2, event, 3);  // of another category than any HID's
  send(0);
  EXPECT_THAT(heard, IsEmpty()) << "0 is what a client has heard last at first";
  for (const std::uint32_t id : {5u, 5u, 6u, 5u, 0u}) send(id);
  EXPECT_THAT(heard, ElementsAre("1:5", "1:6", "1:5", "1:0"));
  heard.clear();
  send(8, 3);
  EXPECT_THAT(heard, ElementsAre("2:8"));
  EXPECT_EQ(state(), 8u);
  hid->doClose();
  hid->doOpen();
  EXPECT_EQ(state(), 8u);
  heard.clear();
  HidNotificationManager::getInstance().unregisterClient(1, 807);
  send(9);
  EXPECT_THAT(heard, IsEmpty());
}

class KeptCpdHidTest : public KeptLog, public CpdHidTest {
 protected:
  KeptCpdHidTest() { log = this; }

  static void hearReport(std::uint32_t clientId, std::uint32_t handle, const std::uint8_t* bytes,
                         std::uint32_t length) {
    log->heard((LogText() << "report of " << handle << " as " << clientId << ": ").hex(bytes, length).str());
    if (clientId == 2) throw Win32Exception("report", 31, "", 0);
  }
  static void hearEvent(std::uint32_t handle, std::uint32_t, std::uint32_t id, const std::uint8_t*,
                        std::uint32_t, std::uint32_t clientId) {
    log->heard((LogText() << "event of " << handle << " as " << clientId << ": " << id).str());
    if (clientId == 2) throw Win32Exception("event", 31, "", 0);
  }
  void open() { gave("open", hid->doOpen()); }
  void close() { gave("close", hid->doClose()); }
  void askForReports() {
    gave("register", hid->doRegisterForReports({1, hearReport}));
    gave("unregister", hid->doUnregisterForReports(1));
  }
  static inline KeptLog* log = nullptr;
};

TEST_F(KeptCpdHidTest, ReportsAndEvents) {
  scene("opened and closed");
  close();
  askForReports();
  fake.onOpen = [](const std::string&) { return 1225u; };
  open();
  fake.onOpen = nullptr;
  open();
  open();
  fake.onVisitor = [](const std::string&, Data*) { return 64u; };
  open();
  fake.onVisitor = nullptr;
  askForReports();
  gave("loss", hid->doOnConnectionLost());
  close();
  close();

  scene("reports");
  open();
  for (const std::uint32_t client : {1u, 2u, 2u, 3u}) registerReports(client, hearReport);
  for (const Data& data : {Data(), bytes({1, 1, 0, 0, 0, 0, 0, 0}), bytes({1, 1, 0, 0, 0, 0, 0, 1}),
                           bytes({1, 1, 0, 0, 0, 0, 0, 0, 0})}) {
    fake.deliver(data);
  }
  HidReportManager::getInstance().unregisterForReports(807, 1);
  fake.deliver(bytes({9}));

  scene("events");
  for (const std::uint32_t client : {1u, 2u, 2u}) registerEvents(client, hearEvent);
  registerEvents(3, hearEvent, 3);
  for (const std::uint32_t id : {0u, 5u, 5u, 6u}) send(id);
  send(8, 3);
  HidNotificationManager::getInstance().unregisterClient(1, 807);
  send(9);
  gave("state " + std::to_string(state()), 0);

  expectKept("hid", "reports_and_events");
}

}  // namespace
}  // namespace qvn::test
