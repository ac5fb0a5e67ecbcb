// Interfaces that others have, or the system's drivers.
#include <fcntl.h>
#include <unistd.h>

#include "support/process/eventually.h"
#include "support/usb/usb_client.h"
#include "usb1/usb_test.h"

namespace qvn::test {
namespace {

using UsbSharing = UsbTest;

TEST_F(UsbSharing, OneThatAnotherHasIsBusy) {
  begin();
  const UsbClient other;
  {
    const UsbOpening owner(other);
    owner.claimBothWays();
    OpenConnection print(*module, printer(), "print");
    EXPECT_EQ(print.openCode(), 170u);
    OpenConnection scan(*module, scanner(), "bidi");
    EXPECT_EQ(scan.openCode(), 0u) << "another interface";
  }
  OpenConnection print(*module, printer(), "print");
  EXPECT_EQ(print.openCode(), 0u);
}

TEST_F(UsbSharing, TheConnectionsOfAPrinterShareItsInterface) {
  begin();
  const UsbClient other;
  {
    OpenConnection bidi(*module, printer(), "bidi");
    {
      OpenConnection print(*module, printer(), "print");
      EXPECT_EQ(print.openCode(), 0u);
    }
    const UsbOpening late(other);
    EXPECT_EQ(libusb_claim_interface(late, 0), LIBUSB_ERROR_BUSY);
  }
  const UsbOpening late(other);
  EXPECT_TRUE(eventually([&] { return libusb_claim_interface(late, 0) == 0; }));
}

TEST_F(UsbSharing, ADriverOfTheSystemLendsItsInterfaceWhileNobodyUsesIt) {
  begin();
  const std::string lp = bed.bindUsblp();
  const UsbClient other;
  const UsbOpening looking(other);
  const auto isBound = [&] { return libusb_kernel_driver_active(looking, 0) == 1; };
  ASSERT_TRUE(isBound());

  const int user = open(lp.c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_GE(user, 0);
  {
    OpenConnection print(*module, printer(), "print");
    EXPECT_EQ(print.openCode(), 170u);
  }
  EXPECT_TRUE(isBound());
  close(user);

  set("Usb1DetachKernelDriver", 0);
  {
    OpenConnection print(*module, printer(), "print");
    EXPECT_EQ(print.openCode(), 170u);
  }
  set("Usb1DetachKernelDriver", 1);
  {
    OpenConnection print(*module, printer(), "print");
    EXPECT_EQ(print.openCode(), 0u);
    EXPECT_FALSE(isBound());
  }
  EXPECT_TRUE(isBound());
}

TEST_F(UsbSharing, TheModuleMayGoWithEverythingOpen) {
  begin();
  Connectable* const bidi = module->connections.getConnection(printer(), "bidi");
  Connectable* const alert = module->connections.getConnection(hid(), "alert");
  alert->setChild(0, &client);
  EXPECT_EQ(bidi->open(), 0u);
  EXPECT_EQ(alert->open(), 0u);
  module.reset();
  const UsbClient other;
  const UsbOpening late(other);
  EXPECT_EQ(libusb_claim_interface(late, 0), 0);
}

}  // namespace
}  // namespace qvn::test
