// The simulated device on the bed, under this program's libusb and another's.
#include <optional>
#include <stdexcept>

#include "support/process/child.h"
#include "support/simulator/simulator_process.h"
#include "support/usb/usb_bed.h"
#include "support/usb/usb_client.h"

namespace qvn::test {
namespace {

using testing::HasSubstr;
using Done = UsbOpening::Done;

// No zeros, which end a job.
Bytes data(std::size_t size) { return Bytes(size, 'x'); }

class SimulatedDeviceTest : public testing::Test {
 protected:
  SimulatedDeviceTest() { plug(); }

  void plug() { bed.plug(simulator.readyLine().at("usb").get<std::uint16_t>()); }

  SimulatorProcess simulator{{"--usb=0", "--events"}};
  UsbBed bed;
};

TEST_F(SimulatedDeviceTest, PrintsForAnotherProgramUntilItIsUnplugged) {
  const UsbClient client;
  std::optional<Child> program;
  {
    const UsbOpening opening(client);
    EXPECT_EQ(libusb_claim_interface(opening, 1), 0);
    program.emplace(std::vector<std::string>{QVN_USB_PRINT}, bed.environment());
  }
  EXPECT_THAT(program->readLine().value_or("nothing"), HasSubstr("MFG:Qvn;"));
  program->write(std::string(100'000, 'x'));
  program->closeInput();
  EXPECT_EQ(program->readLine(), "sent 100000");
  {
    const UsbOpening opening(client);
    EXPECT_EQ(libusb_claim_interface(opening, 0), LIBUSB_ERROR_BUSY);
    EXPECT_EQ(libusb_claim_interface(opening, 1), 0)
        << "a program that was started meanwhile has no part in a claim";
  }
  bed.unplug();
  EXPECT_EQ(program->wait(), -LIBUSB_ERROR_NO_DEVICE) << program->errors();
  EXPECT_EQ(simulator.nextJob().at("bytes"), 100'000);

  plug();
  const UsbOpening opening(client);
  EXPECT_EQ(libusb_claim_interface(opening, 0), 0) << "who has gone has no claims";
}

TEST_F(SimulatedDeviceTest, TellsHowFarATransferCame) {
  constexpr std::size_t kSize = 1'000'000;
  const UsbClient client;
  const UsbOpening opening(client);
  opening.claimBothWays();

  simulator.order("fault usb-stall=2048:1");
  EXPECT_EQ(opening.write(data(3000)), (Done{LIBUSB_ERROR_PIPE, 2048}));
  EXPECT_EQ(opening.write(data(1000)), (Done{LIBUSB_ERROR_PIPE, 0}));
  EXPECT_EQ(libusb_clear_halt(opening, kOut), 0);
  EXPECT_EQ(opening.write(data(1000)), (Done{0, 1000}));

  simulator.order("fault slow-print=1000");
  const Done late = opening.write(data(kSize), 50);
  EXPECT_EQ(late.code, LIBUSB_ERROR_TIMEOUT);
  EXPECT_GT(late.count, 0);
  EXPECT_LT(late.count, static_cast<int>(kSize));
  simulator.order("clear-faults");
  const std::size_t rest = kSize - static_cast<std::size_t>(late.count);
  EXPECT_EQ(opening.write(data(rest)), (Done{0, static_cast<int>(rest)}));

  UsbTransfer in(opening, kIn, 512);
  UsbTransfer cancelled(opening, kIn, 512);
  cancelled.cancel();
  EXPECT_EQ(cancelled.wait(), (Done{LIBUSB_TRANSFER_CANCELLED, 0}));
  simulator.order("unplug");
  EXPECT_EQ(in.wait(), (Done{LIBUSB_TRANSFER_NO_DEVICE, 0}));
  EXPECT_EQ(simulator.nextJob().at("bytes"), kSize + 3048);
  bed.unplug();
  EXPECT_THROW(plug(), std::runtime_error);
  simulator.order("plug");
  plug();
  EXPECT_EQ(UsbOpening(client).write(data(10)), (Done{0, 10}));
}

}  // namespace
}  // namespace qvn::test
