// Alerts: which bit they belong to, what the printer is told, and who is called.
#include <gmock/gmock.h>

#include "common/logging/log_text.h"
#include "printer/clients/printer_alert_type.h"
#include "printer_fixture.h"
#include "support/kept_log/kept_log.h"

namespace qvn::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> heard;

void onAlert(std::uint32_t handle, const std::uint8_t* alert, std::uint32_t length, std::uint32_t client) {
  heard.push_back(std::to_string(client) + ":" + std::to_string(handle) + ":" + std::to_string(alert[5]) +
                  ":" + std::to_string(length));
}

Data alertOf(std::initializer_list<int> fromByte5) {
  Data data = bytes({0xA5, 0, 0, 0, 0xF0});
  data.append(bytes(fromByte5));
  return data;
}

TEST(AlertType, IsDecidedByTheBytes) {
  const struct {
    Data alert;
    std::uint32_t type;
  } cases[] = {{alertOf({0x01, 0, 0}), 0x100000},
               {alertOf({0x80, 0, 0}), 0x100000},
               {alertOf({0xE1, 0, 0}), 0x80000},
               {alertOf({0x03, 0x01, 0}), 0x400},
               {alertOf({0x03, 0x80, 0}), 0x20000},
               {alertOf({0x03, 0x03, 0}), 0},
               {alertOf({0x03}), 0},
               {alertOf({0x73, 0, 1}), 0x100000},
               {alertOf({0x73, 0, 0, 0, 1}), 0x200000},
               {alertOf({0x73, 0, 0, 0, 0, 1}), 0x400000},
               {alertOf({0x73, 0, 0, 0, 0, 2}), 0x800000},
               {alertOf({0x73, 0, 0, 0, 0, 4}), 0x1000000},
               {alertOf({0x73, 0, 0, 0, 0, 3}), 0},
               {alertOf({0x73}), 0},
               {alertOf({0x55, 0, 0}), 0},
               {bytes({0xA5, 0, 0, 0, 0xE0, 0x01, 0, 0}), 0},
               {bytes({0xA4, 0, 0, 0, 0xF0, 0x01, 0, 0}), 0},
               {bytes({0xA5, 0, 0, 0, 0xF0}), 0},
               {Data(), 0}};
  for (const auto& c : cases) EXPECT_EQ(getAlertType(c.alert), c.type) << LogText().hex(c.alert).str();
}

class PrinterAlertTest : public CpdPrinterTest {
 protected:
  PrinterAlertTest() {
    heard.clear();
    printer->doOpen();
    fake.takeCalls();
  }

  std::uint32_t add(std::uint32_t client, std::uint32_t mask) {
    return printer->doRegisterForAlerts({client, mask, onAlert});
  }
  std::vector<std::string> takeExchanges() {
    auto sent = fake.calls("npa");
    fake.takeCalls();
    return sent;
  }

  Data panel = alertOf({0xE1, 0, 0});
  Data inkjet = alertOf({0x01, 0, 0});
};

TEST_F(PrinterAlertTest, ThePrinterIsToldWhatTheClientsTogetherWant) {
  EXPECT_EQ(add(1, 0), 87u);
  EXPECT_EQ(add(1, 0x3FFFFFF), 0u);
  EXPECT_THAT(takeExchanges(),
              ElementsAre("npa bidi 0303C00F0F", "npa bidi E073010110",
                          "npa bidi E073070800110700000000000100", "npa bidi E003FF", "npa bidi E0E10301"));
  EXPECT_TRUE(printer->areAlertsRegistered());
  EXPECT_EQ(add(2, 0x80000), 0u);
  EXPECT_THAT(takeExchanges(), IsEmpty()) << "covered already";
  EXPECT_THAT(fake.held(), testing::HasSubstr("tag 2")) << "kept for the open printer and for the alerts";
  EXPECT_EQ(printer->doUnregisterForAlerts(1), 0u);
  EXPECT_THAT(takeExchanges(), ElementsAre("npa bidi 0303000000", "npa bidi E073010100",
                                           "npa bidi E073070800000000000000000100", "npa bidi E00300"))
      << "the panel's stay for the other client";
  EXPECT_EQ(printer->doUnregisterForAlerts(1), 1u);
  EXPECT_EQ(printer->doUnregisterForAlerts(2), 0u);
  EXPECT_THAT(takeExchanges(), ElementsAre("npa bidi E0E10300"));
  EXPECT_THAT(fake.held(), testing::HasSubstr("tag 1"));
  EXPECT_FALSE(printer->areAlertsRegistered());
}

TEST_F(PrinterAlertTest, AnAlertReachesTheClientsWhoseMaskCoversIt) {
  add(1, 0x80000);
  add(2, 0x180000);
  fake.deliver(panel);
  fake.deliver(inkjet);
  fake.deliver(bytes({0xA5, 0, 5, 0, 5, 1, 0, 0}));
  EXPECT_THAT(heard, ElementsAre("1:7:225:8", "2:7:225:8", "2:7:1:8"));
}

TEST_F(PrinterAlertTest, AClientThatThePrinterDoesNotAcceptIsNotKept) {
  fake.onExchange = nullptr;
  EXPECT_EQ(add(1, 0x80000), 1u);
  fake.deliver(panel);
  EXPECT_THAT(heard, IsEmpty());
  EXPECT_EQ(printer->doUnregisterForAlerts(1), 1u);
}

TEST_F(PrinterAlertTest, APowerOnResetMakesTheNextRegistrationNecessary) {
  add(1, 0x80000);
  takeExchanges();
  fake.deliver(bytes({0xA5, 0, 5, 0, 0xFF, 1, 0, 0}));
  EXPECT_EQ(add(2, 0x80000), 1u) << "no bit is added, so nothing can be sent";
  EXPECT_THAT(takeExchanges(), IsEmpty());
  EXPECT_EQ(add(2, 0x100000), 0u);
}

TEST_F(PrinterAlertTest, AStatusAlertUpdatesTheCache) {
  const Data status =
      bytes({0xA5, 0, 21, 0, 0xF0, 0x73, 1, 1, 0x10, 1, 0x10, 0, 0, 0, 0, 0, 17, 1, 5, 0, 18, 2, 0, 0x2A});
  add(1, 0x100000);
  fake.deliver(status);
  EXPECT_EQ(printer->cache().getLength(), 0u) << "none to update";
  printer->setCache(*cacheReply);
  fake.deliver(status);
  const Data cache = printer->cache();
  EXPECT_EQ(cache.getBuffer()[18], 5);
  EXPECT_EQ(cache.getBuffer()[22], 0);
  EXPECT_EQ(cache.getBuffer()[23], 0x2A);
  EXPECT_EQ(heard.size(), 2u);
}

class KeptAlertTest : public KeptLog, public PrinterAlertTest {
 protected:
  KeptAlertTest() { log = this; }

  static void hear(std::uint32_t handle, const std::uint8_t* alert, std::uint32_t length,
                   std::uint32_t client) {
    log->heard((LogText() << "alert of " << handle << " as " << client << ": ").hex(alert, length).str());
  }
  void add(std::uint32_t client, std::uint32_t mask) {
    gave("register " + std::to_string(client), printer->doRegisterForAlerts({client, mask, hear}));
  }
  void remove(std::uint32_t client) {
    gave("unregister " + std::to_string(client), printer->doUnregisterForAlerts(client));
  }
  static inline KeptLog* log = nullptr;
};

TEST_F(KeptAlertTest, RegistrationsAndAlerts) {
  scene("registrations");
  add(1, 0);
  add(1, 0x3FFFFFF);
  add(2, 0x80000);
  remove(3);
  fake.onExchange = nullptr;
  remove(1);
  fake.onExchange = [this](const Data& request) { return reply(request); };
  remove(2);
  fake.onExchange = nullptr;
  add(1, 0x80000);
  fake.onExchange = [this](const Data& request) { return reply(request); };
  CpdPrinter nameless;
  gave("register", nameless.doRegisterForAlerts({1, 1, hear}));

  scene("alerts");
  add(1, 0x80000);
  add(2, 0x100000);
  const Data status =
      bytes({0xA5, 0, 21, 0, 0xF0, 0x73, 1, 1, 0x10, 1, 0x10, 0, 0, 0, 0, 0, 17, 1, 5, 0, 18, 2, 0, 0x2A});
  fake.deliver(status);
  printer->setCache(*cacheReply);
  fake.deliver(status);
  for (const Data& alert :
       {panel, inkjet, alertOf({0x80, 0, 0}), alertOf({0x03, 0x80, 0}), alertOf({0x03, 0x03, 0}),
        alertOf({0x73, 0, 0, 0, 1}), alertOf({0x73, 0, 0, 0, 0, 4}), alertOf({0x55, 0, 0}),
        bytes({0xA5, 0, 9, 0, 0xF0, 0x73, 1, 1, 8, 1, 8, 0}), bytes({0xA5, 0, 5, 0, 0xFF, 1, 0, 0}),
        bytes({0xA5, 0, 5, 0, 5, 1, 0, 0}), bytes({0xA4, 0, 0, 0, 0xF0, 0x01, 0, 0}), bytes({0xA5, 0})}) {
    fake.deliver(alert);
  }
  for (const Data& alert : {bytes({0xA5, 0, 0, 0, 0xF0}), bytes({0xA5, 0, 0, 0, 0xE0, 1, 0, 0}),
                            bytes({0xA4, 0, 0, 0, 0xF0, 1, 0, 0}), alertOf({0x73})}) {
    getAlertType(alert);
  }
  scene("after the printer was switched on again");
  add(3, 0x80000);
  add(3, 0x200000);

  expectKept("printer", "alerts");
}

}  // namespace
}  // namespace qvn::test
