// The bed under plain libusb: what clients see of the kernel and a device must be what they would see of real
// ones.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "support/process/forked.h"
#include "support/usb/descriptor_builder.h"
#include "support/usb/usb_bed.h"
#include "support/usb/usb_client.h"

namespace qvn::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Taken = ScriptedDevice::Taken;
using Done = UsbOpening::Done;

Bytes printerDescriptors() {
  return DescriptorBuilder(kVendor, kProduct)
      .interface(0, 0, 7, 1, 1)
      .bulk(kOut)
      .interface(0, 1, 7, 1, 2)
      .bulk(kOut)
      .bulk(kIn)
      .interface(1, 0, 0xFF, 1, 1)
      .bulk(0x02);
}

class ScriptedDeviceTest : public testing::Test {
 protected:
  ScriptedDeviceTest() { bed.plug(device); }

  ScriptedDevice device{printerDescriptors()};
  UsbBed bed;
};

TEST_F(ScriptedDeviceTest, IsFoundWithItsStrings) {
  const UsbClient client;
  EXPECT_THAT(client.devices(), ElementsAre("1209:0001 at 1-1"));
  const UsbOpening opening(client);
  unsigned char text[64];
  EXPECT_EQ(libusb_get_string_descriptor_ascii(opening, 2, text, sizeof text), 8);
  EXPECT_STREQ(reinterpret_cast<const char*>(text), "Scripted");
}

TEST_F(ScriptedDeviceTest, IsAskedAsTheKernelDoes) {
  device.onControl = [](const ScriptedDevice::Setup& setup, auto) -> std::optional<Bytes> {
    if (setup[0] != 0xA1) return std::nullopt;
    return Bytes{0, 5, 'M', 'F', 'G'};
  };
  const UsbClient client;
  {
    const UsbOpening owner(client);
    owner.claimBothWays();
    device.takeRequests();
    const UsbOpening other(client);
    unsigned char id[1024];
    EXPECT_EQ(libusb_control_transfer(other, 0xA1, 0, 0, 0x0001, id, sizeof id, 1000),
              5);  // a printer's id: free to ask
    EXPECT_EQ(libusb_control_transfer(other, 0xA1, 1, 0, 0, id, 1, 1000), LIBUSB_ERROR_IO);
    EXPECT_EQ(libusb_control_transfer(owner, 0x21, 2, 0, 0, nullptr, 0, 1000), LIBUSB_ERROR_PIPE);
    EXPECT_EQ(libusb_reset_device(owner), 0);
  }
  // libusb releases the interface for a reset, and the kernel leaves it in its first alternate setting.
  EXPECT_THAT(device.takeRequests(),
              ElementsAre("A1 00 0000 0001", "21 02 0000 0000", "01 0B 0000 0000", "00 09 0001 0000"));
}

TEST_F(ScriptedDeviceTest, EndsTransfersAsItIsTold) {
  constexpr int kPending = 1;
  const struct {
    const char* what;
    std::size_t takes;
    int status;
    Done first;
    Done again;  // where what is pending is taken from now on
  } kWrites[] = {
      {"all", 1000, 0, {0, 1000}, {0, 1000}},
      {"a stall, then halted", 512, -EPIPE, {LIBUSB_ERROR_PIPE, 512}, {LIBUSB_ERROR_PIPE, 0}},
      {"a bus error", 512, -EPROTO, {LIBUSB_ERROR_IO, 512}, {LIBUSB_ERROR_IO, 512}},
      {"not now", 512, kPending, {LIBUSB_ERROR_TIMEOUT, 512}, {0, 1000}},
  };
  for (const auto& write : kWrites) {
    SCOPED_TRACE(write.what);
    bool isPending = write.status == kPending;
    device.onOut = [&](std::uint8_t, std::span<const std::uint8_t> data, bool) {
      if (isPending) return Taken{write.takes, std::nullopt};
      return Taken{write.status == kPending ? data.size() : write.takes, std::min(write.status, 0)};
    };
    const UsbClient client;
    const UsbOpening opening(client);
    opening.claimBothWays();
    EXPECT_EQ(opening.write(Bytes(1000), 20), write.first);
    isPending = false;
    EXPECT_EQ(opening.write(Bytes(1000), 1000), write.again);
    device.onOut = nullptr;
    EXPECT_EQ(libusb_clear_halt(opening, kOut), 0);
    EXPECT_EQ(opening.write({1, 2}), (Done{0, 2}));
  }

  const struct {
    const char* what;
    std::optional<Bytes> sent;
    int status;
    std::size_t asked;
    Done got;
  } kReads[] = {
      {"less than asked for", Bytes{1, 2, 3}, 0, 512, {0, 3}},
      {"nothing", Bytes(), 0, 512, {0, 0}},
      {"the first of two", Bytes(700, 1), 0, 512, {0, 512}},
      {"the second of two", std::nullopt, 0, 512, {0, 188}},
      {"less than a packet asked for", Bytes(8, 1), 0, 4, {LIBUSB_ERROR_OVERFLOW, 4}},
      {"bytes and a stall", Bytes{1, 2}, -EPIPE, 512, {LIBUSB_ERROR_PIPE, 2}},
  };
  const UsbClient client;
  const UsbOpening opening(client);
  opening.claimBothWays();
  for (const auto& read : kReads) {
    SCOPED_TRACE(read.what);
    if (read.sent.has_value()) device.send(kIn, *read.sent, read.status);
    Bytes bytes(read.asked);
    EXPECT_EQ(opening.read(bytes), read.got);
  }
}

TEST_F(ScriptedDeviceTest, IsOfOneClaimantAtATime) {
  const UsbClient client;
  const UsbOpening other(client);
  {
    const UsbOpening opening(client);
    EXPECT_EQ(libusb_claim_interface(opening, 5), LIBUSB_ERROR_NOT_FOUND);
    EXPECT_EQ(opening.write({1}), (Done{0, 1})) << "the kernel claims what is used";
    Bytes bytes(512);
    EXPECT_EQ(opening.read(bytes), (Done{LIBUSB_ERROR_IO, 0})) << "not in the first alternate setting";
    EXPECT_EQ(libusb_claim_interface(other, 0), LIBUSB_ERROR_BUSY);
    EXPECT_EQ(libusb_claim_interface(other, 1), 0);
    EXPECT_EQ(libusb_release_interface(opening, 1), LIBUSB_ERROR_NOT_FOUND);
  }
  EXPECT_EQ(libusb_claim_interface(other, 0), 0) << "the end of the other is the end of its claims";
  EXPECT_EQ(libusb_release_interface(other, 0), 0);

  Pipe told;
  Forked killed([&] {
    const UsbClient itself;
    const UsbOpening opening(itself);
    told.tell(libusb_claim_interface(opening, 0));
    pause();
    return 0;
  });
  EXPECT_EQ(told.hear(), 0);
  EXPECT_EQ(libusb_claim_interface(other, 0), LIBUSB_ERROR_BUSY);
  killed.kill();
  EXPECT_EQ(libusb_claim_interface(other, 0), 0);
}

TEST_F(ScriptedDeviceTest, IsTheKernelDriversUntilItIsDetached) {
  const std::string node = bed.bindUsblp();
  const UsbClient client;
  const UsbOpening opening(client);
  EXPECT_EQ(libusb_kernel_driver_active(opening, 0), 1);
  EXPECT_EQ(libusb_claim_interface(opening, 0), LIBUSB_ERROR_BUSY);
  const int user = open(node.c_str(), O_RDWR | O_CLOEXEC);
  EXPECT_GE(user, 0);
  EXPECT_EQ(open(node.c_str(), O_RDWR | O_CLOEXEC), -1);
  EXPECT_EQ(errno, EBUSY);
  close(user);

  EXPECT_EQ(libusb_set_auto_detach_kernel_driver(opening, 1), 0);
  EXPECT_EQ(libusb_claim_interface(opening, 0), 0);
  EXPECT_EQ(libusb_kernel_driver_active(opening, 0), 0);
  EXPECT_NE(access(node.c_str(), F_OK), 0);
  EXPECT_EQ(libusb_release_interface(opening, 0), 0);
  EXPECT_EQ(libusb_kernel_driver_active(opening, 0), 1);
  EXPECT_EQ(access(node.c_str(), F_OK), 0);
}

TEST_F(ScriptedDeviceTest, GoesWithItsTransfersAndComesAgain) {
  device.onOut = [](std::uint8_t, auto, bool) { return Taken{512, std::nullopt}; };
  const UsbClient client;
  UsbHotplug hotplug(client);
  EXPECT_THAT(hotplug.take(1), ElementsAre("arrived"));
  {
    const UsbOpening opening(client);
    opening.claimBothWays();
    UsbTransfer out(opening, kOut, 1000);
    UsbTransfer in(opening, kIn, 512);
    bed.unplug();
    EXPECT_EQ(out.wait(), (Done{LIBUSB_TRANSFER_NO_DEVICE, 512}));
    EXPECT_EQ(in.wait(), (Done{LIBUSB_TRANSFER_NO_DEVICE, 0}));
    EXPECT_EQ(opening.write({1}), (Done{LIBUSB_ERROR_NO_DEVICE, 0}));
    EXPECT_EQ(libusb_claim_interface(opening, 1), LIBUSB_ERROR_NO_DEVICE);
  }
  EXPECT_THAT(hotplug.take(1), ElementsAre("left"));
  EXPECT_THAT(client.devices(), IsEmpty());
  EXPECT_THAT(UsbClient().devices(), IsEmpty());

  device.onOut = nullptr;
  for (const char* port : {"1-1", "1-3"}) {
    bed.plug(device, port);
    EXPECT_THAT(hotplug.take(1), ElementsAre("arrived"));
    EXPECT_THAT(client.devices(), ElementsAre("1209:0001 at " + std::string(port)));
    const UsbOpening opening(client);
    EXPECT_EQ(opening.write({1, 2}), (Done{0, 2}));
    bed.unplug(port);
    EXPECT_THAT(hotplug.take(1), ElementsAre("left"));
  }
}

}  // namespace
}  // namespace qvn::test
