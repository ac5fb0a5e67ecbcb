// Every transfer of what clients do fails once, in every way: nothing hangs, and afterwards the same can be
// done as if nothing had happened. And what clients do inside the callbacks that the transport's threads
// bring.
#include <algorithm>
#include <atomic>
#include <thread>

#include "common/settings/application_settings.h"
#include "qvn/qvn.h"
#include "support/manual_clock.h"
#include "support/process/eventually.h"
#include "sweeps/case_watch.h"
#include "usb1/usb_test.h"

namespace qvn::test {
namespace {

using Taken = ScriptedDevice::Taken;
using Results = std::vector<std::uint32_t>;

constexpr std::uint32_t kClient = 1;
constexpr std::uint32_t kPrinter = 20001, kScanner = 20401, kHid = 20801;
constexpr std::uint32_t kPanelAlerts = 0x80000;
constexpr std::uint8_t kEndOfJob[] = {0x1B, 0x2A, 0x82, 0, 0, 0, 0, 0xAC};

// What a device replies to a packet or a command; nothing to print data.
Bytes replyTo(std::uint8_t endpoint, std::span<const std::uint8_t> data) {
  if (endpoint == endpoint::kScanOut) return hex("1B 53 53 00 00 00 00 00");
  if (data.size() < 6 || data[0] != 0xA5) return {};
  Bytes reply = {0xA5, 0, 6, 0x20, data[4], data[5], 0, 0, 1};
  if (data[4] == 0xE0 && data.size() > 6) reply[6] = data[6];
  if (data[4] == 0x05 && data[5] == 0x02) reply.resize(26);  // the job is over
  if (data[4] == 0x01) reply.resize(32);
  reply[2] = static_cast<std::uint8_t>(reply.size() - 3);
  return reply;
}

Results printAJob() {
  std::uint32_t taken = 0;
  Bytes page(1500, 'x');
  page.insert(page.end(), std::begin(kEndOfJob), std::end(kEndOfJob));
  return {QvnOpenPrinter(kClient, kPrinter),
          QvnStartJobPrinter(kClient, kPrinter, 1, "queue", "host", "job", "user"),
          QvnWritePrinter(kClient, kPrinter, page.data(), static_cast<std::uint32_t>(page.size()), &taken),
          QvnEndJobPrinter(kClient, kPrinter), QvnClosePrinter(kClient, kPrinter)};
}

Results askTheScanner() {
  const Bytes command = hex("1B 53 51 00 00 00 00 00");
  std::uint8_t reply[64];
  std::uint32_t length = 0;
  return {QvnOpenScanner(kClient, kScanner),
          QvnExchangeDataScanner(kClient, kScanner, command.data(),
                                 static_cast<std::uint32_t>(command.size()), reply, sizeof reply, &length),
          QvnCloseScanner(kClient, kScanner)};
}

Results openTheHid() { return {QvnOpenHid(kClient, kHid), QvnCloseHid(kClient, kHid)}; }

struct Use {
  const char* name;
  Results (*run)();
  friend void PrintTo(const Use& use, std::ostream* out) { *out << use.name; }
};
constexpr Use kUses[] = {{"Print", printAJob}, {"Scanner", askTheScanner}, {"Hid", openTheHid}};

class UsbSweep : public UsbTest {
 protected:
  UsbSweep() {
    for (const char* timeout : {"Usb1NpaWriteTimeout", "Usb1ReadTimeout", "Usb1PJLWriteTimeout"})
      set(timeout, 50);
    store(std::string(kLibraryRegistryRoot) + "Settings\\", "CpdPrinterMwo", 0);
    device.onOut = [this](std::uint8_t out, std::span<const std::uint8_t> data, bool) {
      return take(out, data);
    };
    bed.plug(device);
    EXPECT_EQ(QvnInitialize(), 0u);
    EXPECT_EQ(QvnAddTransport(QVN_TRANSPORT_MODULE), 0u);
    EXPECT_EQ(QvnDiscovery(kClient, "USB1", ""), 0u);
  }
  ~UsbSweep() override { EXPECT_EQ(QvnUninitialize(), 0u); }

  // The device does what it should but for the transfer of that number.
  Taken take(std::uint8_t out, std::span<const std::uint8_t> data) {
    const bool isFault = ++transfers == failing;
    if (isFault && fault) return fault(out, data);
    if (const Bytes reply = replyTo(out, data); !reply.empty()) {
      device.send(static_cast<std::uint8_t>(out | 0x80), reply);
    }
    return Taken{data.size()};
  }

  ManualClock clock{ManualClock::Mode::AutoAdvance};
  CaseWatch watch;
  std::atomic<int> transfers{0};
  int failing = 0;
  std::function<Taken(std::uint8_t, std::span<const std::uint8_t>)> fault;
};

class UsbFaultSweep : public UsbSweep, public testing::WithParamInterface<Use> {};

TEST_P(UsbFaultSweep, EveryTransferFailsOnce) {
  const auto in = [](std::uint8_t out) { return static_cast<std::uint8_t>(out | 0x80); };
  std::atomic<bool> mustUnplug{false};
  const struct {
    const char* name;
    std::function<Taken(std::uint8_t, std::span<const std::uint8_t>)> happens;
  } kFaults[] = {
      {"stalls",
       [](auto, auto) {
         return Taken{0, -EPIPE};
       }},
      {"breaks off",
       [](auto, auto data) {
         return Taken{std::min<std::size_t>(data.size(), 512), -EPROTO};
       }},
      {"is not taken",
       [](auto, auto) {
         return Taken{0, std::nullopt};
       }},
      {"is not answered", [](auto, auto data) { return Taken{data.size()}; }},
      {"is answered by a stall",
       [&](auto out, auto data) { return device.halt(in(out)), Taken{data.size()}; }},
      {"is answered by babble",
       [&](auto out, auto data) {
         return device.send(in(out), Bytes(512, 1), -EOVERFLOW), Taken{data.size()};
       }},
      {"is answered by an error",
       [&](auto out, auto data) { return device.send(in(out), hex("A5 00"), -EPROTO), Taken{data.size()}; }},
      {"is the last",
       [&](auto, auto) {
         return mustUnplug = true, Taken{0, std::nullopt};
       }},
  };
  transfers = 0;
  watch.begin(GetParam().name);
  const Results usual = GetParam().run();
  EXPECT_THAT(usual, testing::Each(0u));
  const int count = std::max(transfers.load(), 1);
  for (int number = 1; number <= count; ++number) {
    for (const auto& one : kFaults) {
      const std::string what =
          std::string(GetParam().name) + ": transfer " + std::to_string(number) + " " + one.name;
      if (!watch.begin(what)) continue;
      SCOPED_TRACE(what);
      transfers = 0;
      failing = number;
      fault = one.happens;
      std::jthread unplugger([&](const std::stop_token& over) {
        while (!over.stop_requested() && !mustUnplug) std::this_thread::yield();
        if (mustUnplug) bed.unplug();
      });
      GetParam().run();
      unplugger.request_stop();
      unplugger.join();
      failing = 0;
      if (mustUnplug.exchange(false)) bed.plug(device);
      EXPECT_EQ(GetParam().run(), usual);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Of, UsbFaultSweep, testing::ValuesIn(kUses),
                         [](const auto& use) { return use.param.name; });

std::atomic<std::uint32_t> heard{0};
std::function<void()> inside;

// The functions of an open device, called inside a callback of it: each returns, with 0 or what is refused
// there.
TEST_F(UsbSweep, ClientsMayDoEverythingInsideAnAlert) {
  const std::pair<const char*, std::function<std::uint32_t()>> kCalls[] = {
      {"open", [] { return QvnOpenPrinter(kClient, kPrinter); }},
      {"close", [] { return QvnClosePrinter(kClient, kPrinter); }},
      {"exchange",
       [] {
         const Bytes packet = hex("A5 00 03 50 02 00");
         std::uint8_t reply[64];
         std::uint32_t length = 0;
         return QvnExchangeNpaPrinter(kClient, kPrinter, packet.data(),
                                      static_cast<std::uint32_t>(packet.size()), reply, sizeof reply,
                                      &length);
       }},
      {"start a job", [] { return QvnStartJobPrinter(kClient, kPrinter, 1, "q", "h", "j", "u"); }},
      {"ask the scanner", [] { return askTheScanner()[1]; }},
      {"discover", [] { return QvnDiscovery(kClient, "USB1", ""); }},
      {"unregister", [] { return QvnUnregisterForAlertsPrinter(kClient, kPrinter); }},
      {"delete", [] { return QvnDeletePrinter(kClient, kPrinter); }},
  };
  for (const auto& [name, call] : kCalls) {
    if (!watch.begin(name)) continue;
    SCOPED_TRACE(name);
    heard = 0;
    std::atomic<std::uint32_t> answer{~0u};
    inside = [&, run = call] { answer = run(); };
    ASSERT_EQ(QvnDiscovery(kClient, "USB1", ""), 0u);
    ASSERT_EQ(QvnOpenPrinter(kClient, kPrinter), 0u);
    ASSERT_EQ(
        QvnRegisterForAlertsPrinter(kClient, kPrinter, kPanelAlerts,
                                    [](std::uint32_t, const std::uint8_t*, std::uint32_t, std::uint32_t) {
                                      if (heard == 0) inside();
                                      ++heard;
                                    }),
        0u);
    device.send(endpoint::kPrintIn, hex("A5 00 05 00 F0 E1 00 00"));
    EXPECT_TRUE(eventually([&] { return heard > 0; }));
    EXPECT_THAT(answer.load(), testing::AnyOf(0u, 1u, 170u, 1460u));
    QvnUnregisterForAlertsPrinter(kClient, kPrinter);
    while (QvnEndJobPrinter(kClient, kPrinter) == 0) {
    }
    while (QvnClosePrinter(kClient, kPrinter) == 0) {
    }
    EXPECT_THAT(printAJob(), testing::Each(0u));
  }
}

}  // namespace
}  // namespace qvn::test
