// A Cpd HID's states, and who hears its reports and events.
#include <gmock/gmock.h>

#include <memory>
#include <string>

#include "common/exception.h"
#include "common/logging/log_text.h"
#include "hid/cpd_hid.h"
#include "hid/hid_notification_manager.h"
#include "hid/hid_report_manager.h"
#include "support/kept_log/kept_log.h"
#include "support/library_fixture.h"

namespace qvn::test {
namespace {

class KeptCpdHidTest : public KeptLog, public LibraryTest {
 protected:
  KeptCpdHidTest() { hid->setAttributes(FakeTransport::deviceText("CpdHid", 807)); }

  static void hearReport(std::uint32_t clientId, std::uint32_t handle, const std::uint8_t* bytes,
                         std::uint32_t length) {
    log->heard((LogText() << "report of " << handle << " as " << clientId << ": ").hex(bytes, length).str());
    if (clientId == 2) throw Win32Exception("report", 31, "", 0);
  }
  static void hearEvent(std::uint32_t handle, std::uint32_t category, std::uint32_t id,
                        const std::uint8_t* data, std::uint32_t length, std::uint32_t clientId) {
    EXPECT_EQ(category, 2u);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(length, 0u);
    log->heard((LogText() << "event of " << handle << " as " << clientId << ": " << id).str());
    if (clientId == 2) throw Win32Exception("event", 31, "", 0);
  }
  void open() { gave("open", hid->doOpen()); }
  void close() { gave("close", hid->doClose()); }
  void askForReports() {
    gave("register", hid->doRegisterForReports({1, hearReport}));
    gave("unregister", hid->doUnregisterForReports(1));
  }
  void askState() {
    std::uint32_t state = 99;
    const std::uint32_t rc = hid->doGetCurrentState(state);
    gave("state " + std::to_string(state), rc);
  }
  void send(std::uint32_t id, std::uint32_t category = 2) {
    Notification notification;
    notification.category = category;
    notification.id = id;
    fake.deliver(notification);
  }

  std::unique_ptr<CpdHid> hid = std::make_unique<CpdHid>();
  HidReportManager& reports = HidReportManager::getInstance();
  HidNotificationManager& events = HidNotificationManager::getInstance();
};

TEST_F(KeptCpdHidTest, ReportsAndEvents) {
  scene("opened and closed");
  close();
  askForReports();
  fake.onOpen = [](const std::string&) { return 1225u; };
  open();
  fake.onOpen = nullptr;
  open();
  for (const std::uint32_t agreed : {0u, 1u, 64u}) {
    fake.onVisitor = [=](const std::string&, Data*) { return agreed; };
    open();
  }
  fake.onVisitor = nullptr;
  askForReports();
  gave("loss", hid->doOnConnectionLost());
  close();
  close();
  failCalls("close", 31);
  close();
  fake.onCall = nullptr;

  scene("reports");
  open();
  for (const std::uint32_t client : {1u, 2u, 2u, 3u}) reports.registerForReports(807, {client, hearReport});
  for (const Data& data : {Data(), bytes({1, 1, 0, 0, 0, 0, 0, 0}), bytes({1, 1, 0, 0, 0, 0, 0, 1}),
                           bytes({1, 1, 0, 0, 0, 0, 0, 0, 0})}) {
    fake.deliver(data);
  }
  for (int i = 0; i < 2; ++i) reports.unregisterForReports(807, 1);
  fake.deliver(bytes({9}));

  scene("events");
  for (const std::uint32_t client : {1u, 2u, 2u, 3u}) {
    events.registerClient(807, {client, client == 3 ? 3u : 2u, Data(), hearEvent});
  }
  for (const std::uint32_t id : {0u, 5u, 5u, 6u, 5u, 0u}) send(id);
  send(8, 3);
  events.unregisterClient(1, 807);
  send(9);
  close();
  open();
  askState();

  scene("shut down while it is open");
  hid->shutDown();
  send(1);
  close();

  expectKept("hid", "reports_and_events");
}

}  // namespace
}  // namespace qvn::test
