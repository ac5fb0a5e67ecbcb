// The "alert" connection of a HID, against a peer that plays the device.
#include <gmock/gmock.h>

#include "ipv4/connections/connection_test.h"
#include "ipv4/connections/open_part.h"

namespace qvn::test {
namespace {

using testing::ElementsAre;

constexpr char kReport[] = "01 01 03 00 00 00 00 00";
constexpr char kReportFrame[] = "01 08 00 01 01 03 00 00 00 00 00";
constexpr char kEventFrame[] = "02 08 00 04 03 02 81 02 00 00 00";

class Hid : public ConnectionTest {
 protected:
  std::uint32_t openAgain() { return visit(*module, **alert, visitor_name::kOpenHid, nullptr, &device); }

  std::optional<Listener> listener{std::in_place};
  std::optional<OpenPart> alert{std::in_place, *module, partText("CpdHid", listener->port()),
                                *listener,     device,  "alert"};
};

TEST_F(Hid, GetsReportsAndEventsHoweverTheyArrive) {
  const Bytes frames = hex(kReportFrame) + hex("07 03 00 01 02 03") + hex(kEventFrame) +
                       hex("02 07 00 05 00 00 00 02 00 00 01 00 00") + hex(kReportFrame) + hex("00 00 00");
  for (const std::uint8_t byte : frames) alert->peer->send({byte});
  alert->peer->send(frames);
  const std::string event = "event 2164392708 2";
  EXPECT_THAT(device.waitFor(8), ElementsAre(kReport, event, "", kReport, kReport, event, "", kReport));
  EXPECT_NE(device.deliveringThread(), std::this_thread::get_id());
}

TEST_F(Hid, IsConnectedAnewWhenOneMoreClientCountsOnIt) {
  EXPECT_EQ(openAgain(), 0u);
  EXPECT_FALSE(listener->isWaiting()) << "it still was";
  alert->peer->close();
  EXPECT_THAT(device.waitFor(1), ElementsAre("lost"));
  EXPECT_EQ(openAgain(), 0u);
  alert->peer.emplace(listener->accept());
  alert->peer->send(hex(kReportFrame));
  EXPECT_THAT(device.waitFor(2), ElementsAre("lost", kReport));
  alert->peer->reset();
  device.waitFor(3);
  listener.reset();
  EXPECT_EQ(openAgain(), 1225u);
  (*alert)->close();
  EXPECT_EQ(openAgain(), 1229u);
  EXPECT_THAT(device.deliveries(), ElementsAre("lost", kReport, "lost"));
}

}  // namespace
}  // namespace qvn::test
