// What the watching verbs do while nothing comes.
#include <gmock/gmock.h>

#include "library_settings.h"
#include "qvn/attributes.h"
#include "qvn/transport/attribute_codec.h"
#include "shared/client/session.h"
#include "support/fake_transport.h"
#include "support/manual_clock.h"
#include "watch/event_queue.h"
#include "watch/hear_all.h"

namespace qvn::cli {
namespace {

// Answers what the test says.
class Watched {
 public:
  Watched(const Session&, const Device& device) {
    if (device.handle == 9) throw Failure("cannot open printer 9");
  }
  std::uint32_t ask() const { return answer; }

  static inline std::uint32_t answer = 0;
};

TEST(Watching, TellsOnceThatAConnectionIsLostAndThatItIsBack) {
  test::FakeTransport::registerModule();
  for (const std::uint32_t handle : {7U, 9U}) {
    std::string text = test::FakeTransport::printerText(handle, "LAB" + std::to_string(handle));
    AttributeCodec::setString(text, QVN_ATTRIBUTE_ADDRESS, "192.0.2.7");
    writeLibraryValue("PrinterStore", std::to_string(handle), {platform::registry::ValueType::String, text});
  }
  const Session session;
  testing::internal::CaptureStderr();
  AllHeard<Watched> heard(session, deviceKinds().front(), {});
  for (const std::uint32_t answer : {0U, 170U, 1225U, 1460U, 0U, 1U, 64U}) {
    Watched::answer = answer;
    heard.askAll();
  }
  const std::string said = testing::internal::GetCapturedStderr();
  EXPECT_EQ(
      said,
      "qvn: cannot open printer 9\n"
      "watching 1 printer\n"
      "connection to LAB7 lost, trying again: nothing listens at 192.0.2.7: is it switched on? (result 1225, "
      "QRN_ERROR_CONNECTION_REFUSED)\n"
      "watching LAB7 again\n"
      "connection to LAB7 lost, trying again: 192.0.2.7 closed the connection: was it switched off, or does "
      "it serve another host? (result 64, QRN_ERROR_NETNAME_DELETED)\n");
  EXPECT_THROW(AllHeard<Watched>(session, deviceKinds().front(), {"LAB9"}), Failure);
}

TEST(Watching, AsksTheDevicesWhileNothingComes) {
  const test::SkippingClock clock;
  Interrupt::install();
  EventQueue events;
  int idle = 0;
  std::vector<Json> printed;
  events.print(
      2, [&](const Json& event) { printed.push_back(event); },
      [&] {
        if (++idle == 2) {
          events.add(1);
          events.add(2);
        }
      });
  EXPECT_EQ(idle, 2);
  EXPECT_EQ(printed, (std::vector<Json>{1, 2}));
}

}  // namespace
}  // namespace qvn::cli
