// Alerts: which bit they belong to, what the printer is told, and who is called.
#include <gmock/gmock.h>

#include "common/logging/log_text.h"
#include "printer/clients/printer_alert_type.h"
#include "printer_fixture.h"
#include "support/kept_log/kept_log.h"

namespace qvn::test {
namespace {

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
  for (int bit = 0; bit < 8; ++bit) EXPECT_EQ(getAlertType(alertOf({0x03, 1 << bit})), 0x400u << bit) << bit;
}

class KeptAlertTest : public KeptLog, public CpdPrinterTest {
 protected:
  KeptAlertTest() { printer->doOpen(); }

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
  remove(1);
  fake.onExchange = [this](const Data& request) { return reply(request); };
  CpdPrinter nameless;
  gave("register", nameless.doRegisterForAlerts({1, 1, hear}));

  scene("alerts");
  add(1, 0x80000);
  add(2, 0x180000);
  const Data status =
      bytes({0xA5, 0, 21, 0, 0xF0, 0x73, 1, 1, 0x10, 1, 0x10, 0, 0, 0, 0, 0, 17, 1, 5, 0, 18, 2, 0, 0x2A});
  fake.deliver(status);
  printer->setCache(*cacheReply);
  fake.deliver(status);
  for (const Data& alert :
       {alertOf({0xE1, 0, 0}), alertOf({0x01, 0, 0}), alertOf({0x80, 0, 0}), alertOf({0x03, 0x80, 0}),
        alertOf({0x03, 0x03, 0}), alertOf({0x73, 0, 0, 0, 1}), alertOf({0x73, 0, 0, 0, 0, 4}),
        alertOf({0x55, 0, 0}), bytes({0xA5, 0, 9, 0, 0xF0, 0x73, 1, 1, 8, 1, 8, 0}),
        bytes({0xA5, 0, 5, 0, 0xFF, 1, 0, 0}), bytes({0xA5, 0, 5, 0, 5, 1, 0, 0}),
        bytes({0xA4, 0, 0, 0, 0xF0, 0x01, 0, 0}), bytes({0xA5, 0})}) {
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
