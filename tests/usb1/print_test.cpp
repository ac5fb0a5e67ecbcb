// The "print" connection over an interface that is scripted.
#include <atomic>
#include <chrono>
#include <thread>

#include "support/process/eventually.h"
#include "usb1/usb_test.h"

namespace qvn::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Taken = ScriptedDevice::Taken;

constexpr std::uint32_t kShortTimeout = 200;

struct Written {
  std::uint32_t code;
  std::uint32_t count;
  friend bool operator==(const Written&, const Written&) = default;
};
void PrintTo(const Written& written, std::ostream* out) {
  *out << "code " << written.code << ", count " << written.count;
}

class UsbPrint : public UsbTest {
 protected:
  Written write(Connectable& connection, const Bytes& bytes) {
    Data data(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    connection.write(data);
    EXPECT_EQ(data.getLength(), bytes.size() - data.getCount());
    return {data.getRc(), data.getCount()};
  }

  Bytes received() {
    Bytes all;
    for (const Bytes& transfer : device.takeReceived(endpoint::kPrintOut)) {
      all.insert(all.end(), transfer.begin(), transfer.end());
    }
    return all;
  }

  // Takes so many bytes of a transfer and then nothing more of it.
  static auto takesThenWaits(std::size_t most) {
    return [left = most](std::uint8_t, std::span<const std::uint8_t> data, bool) mutable {
      const std::size_t count = std::min(left, data.size());
      left -= count;
      return Taken{count, count == data.size() ? std::optional(0) : std::nullopt};
    };
  }
};

TEST_F(UsbPrint, AllThatIsWrittenGoesOutAsItIs) {
  begin();
  OpenConnection print(*module, printer(), "print");
  ASSERT_EQ(print.openCode(), 0u);
  for (const std::size_t size :
       {std::size_t{1}, std::size_t{511}, std::size_t{512}, std::size_t{65536}, std::size_t{200001}}) {
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i * 7);
    EXPECT_EQ(write(*print, bytes), (Written{0, static_cast<std::uint32_t>(size)}));
    EXPECT_EQ(received(), bytes) << size;
  }
}

TEST_F(UsbPrint, DataThatBeginsLikeAPacketIsNoPacket) {
  begin();
  OpenConnection print(*module, printer(), "print");
  const Bytes likeAPacket = hex("A5 00 02 00 01");
  EXPECT_EQ(write(*print, likeAPacket).code, 0u);
  EXPECT_THAT(device.takeReceived(endpoint::kPrintOut), ElementsAre(hex("A5"), hex("00 02 00 01")));
  // Inside a unit nothing begins.
  EXPECT_EQ(write(*print, Bytes(512, 0x20)).code, 0u);
  EXPECT_EQ(write(*print, likeAPacket).code, 0u);
  EXPECT_THAT(device.takeReceived(endpoint::kPrintOut), ElementsAre(Bytes(512, 0x20), likeAPacket));
}

TEST_F(UsbPrint, WhatWasTakenIsCountedWhenTheDeviceTakesNoMore) {
  set("Usb1PJLWriteTimeout", kShortTimeout);
  device.onOut = takesThenWaits(1536);
  begin();
  OpenConnection print(*module, printer(), "print");
  EXPECT_EQ(write(*print, Bytes(4096, 'x')), (Written{1460, 1536}));
  EXPECT_EQ(write(*print, Bytes(10, 'y')), (Written{1460, 0}));
}

TEST_F(UsbPrint, ASlowDeviceIsWaitedForAsLongAsItTakesSomething) {
  set("Usb1PJLWriteTimeout", kShortTimeout);
  std::atomic<bool> wholeTransfer{false};
  device.onOut = [&](std::uint8_t, std::span<const std::uint8_t> data, bool) {
    // A packet of each transfer, which then has to be asked for anew.
    const std::size_t count = wholeTransfer ? data.size() : std::min<std::size_t>(data.size(), 512);
    return Taken{count, count == data.size() ? std::optional(0) : std::nullopt};
  };
  begin();
  OpenConnection print(*module, printer(), "print");
  EXPECT_EQ(write(*print, Bytes(1200, 'x')), (Written{0, 1200}));
}

TEST_F(UsbPrint, AStallIsClearedAndTheRestSent) {
  std::atomic<int> stalls{1};
  device.onOut = [&](std::uint8_t, std::span<const std::uint8_t> data, bool) {
    if (stalls-- > 0) return Taken{std::min<std::size_t>(512, data.size()), -EPIPE};
    return Taken{data.size()};
  };
  begin();
  OpenConnection print(*module, printer(), "print");
  EXPECT_EQ(write(*print, Bytes(2048, 'x')), (Written{0, 2048}));
  // One that stalls for ever is not cleared for ever.
  device.onOut = [&](std::uint8_t, std::span<const std::uint8_t>, bool) { return Taken{0, -EPIPE}; };
  EXPECT_EQ(write(*print, Bytes(2048, 'x')), (Written{1117, 0}));
}

TEST_F(UsbPrint, UnpluggingEndsAWriteAndTheNextOpenFindsTheDeviceAgain) {
  device.onOut = takesThenWaits(1024);
  begin();
  OpenConnection print(*module, printer(), "print");
  std::thread unplugger([&] {
    EXPECT_TRUE(eventually([&] { return device.waiting(endpoint::kPrintOut) == 1; }));
    bed.unplug();
  });
  EXPECT_EQ(write(*print, Bytes(4096, 'x')), (Written{64, 1024}));
  unplugger.join();
  EXPECT_EQ(write(*print, Bytes(1, 'x')), (Written{64, 0}));
  print->close();
  EXPECT_EQ(print->open(), 1167u);
  device.onOut = nullptr;
  bed.plug(device, "1-2");
  EXPECT_EQ(print->open(), 0u);
  EXPECT_EQ(write(*print, Bytes(10, 'y')), (Written{0, 10}));
}

TEST_F(UsbPrint, AFlushResetsThePrinterSoftly) {
  begin();
  OpenConnection print(*module, printer(), "print");
  device.takeRequests();
  EXPECT_EQ(visit(*module, *print, visitor_name::kFlushPrintBuffer), 0u);
  EXPECT_THAT(device.takeRequests(), ElementsAre("21 02 0000 0000"));
  device.onControl = nullptr;  // every request stalls
  EXPECT_EQ(visit(*module, *print, visitor_name::kFlushPrintBuffer), 0u);
}

TEST_F(UsbPrint, AClosedConnectionTakesNothing) {
  begin();
  OpenConnection print(*module, printer(), "print");
  print->close();
  EXPECT_EQ(write(*print, Bytes(1, 'x')), (Written{1229, 0}));
  EXPECT_THAT(received(), IsEmpty());
  EXPECT_EQ(print->open(), 0u);
}

}  // namespace
}  // namespace qvn::test
