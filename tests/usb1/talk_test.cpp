// Packets, commands and reports over interfaces that are scripted.
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

constexpr ExchangeResult kReplied{0, 0};
constexpr ExchangeResult kNoReply{0, 1460};
constexpr ExchangeResult kLost{64, 64};
constexpr std::uint32_t kShortTimeout = 200;

constexpr char kRequest[] = "A5 00 04 50 03 01 00";
constexpr char kReply[] = "A5 00 05 50 03 01 00 2A";
constexpr char kAlert[] = "A5 00 06 50 F3 01 00 00 01";

class UsbTalk : public UsbTest {
 protected:
  UsbTalk() { set("Usb1ReadTimeout", 5000); }

  // Replies to whatever goes out with `reply`.
  void answerWith(const char* reply) {
    device.onOut = [this, bytes = hex(reply)](std::uint8_t out, std::span<const std::uint8_t> data, bool) {
      if (!data.empty()) device.send(static_cast<std::uint8_t>(out | 0x80), bytes);
      return Taken{data.size()};
    };
  }

  ExchangeResult ask(OpenConnection& bidi, std::string_view request = kRequest,
                     const char* visitor = visitor_name::kNpaData) {
    return exchange(*module, *bidi, client, request, visitor);
  }
};

TEST_F(UsbTalk, APacketIsAUnitByItselfAndItsReplyIsDelivered) {
  begin();
  OpenConnection bidi(*module, printer(), "bidi");
  ASSERT_EQ(bidi.openCode(), 0u);
  answerWith(kReply);
  EXPECT_EQ(ask(bidi), kReplied);
  EXPECT_THAT(client.deliveries(), ElementsAre("A5 00 05 50 03 01 00 2A"));
}

TEST_F(UsbTalk, PacketsGoBetweenPrintDataInUnitsOfTheirOwn) {
  std::vector<std::size_t> sizes;
  device.onOut = [&](std::uint8_t, std::span<const std::uint8_t> data, bool) {
    sizes.push_back(data.size());
    if (!data.empty() && data[0] == 0xA5) device.send(endpoint::kPrintIn, hex(kReply));
    return Taken{data.size()};
  };
  begin();
  OpenConnection bidi(*module, printer(), "bidi");
  OpenConnection print(*module, printer(), "print");
  Data data(Bytes(1024, 'x').data(), 1024);
  print->write(data);
  EXPECT_EQ(ask(bidi), kReplied);
  // One of exactly a packet of the bus has to be ended.
  std::string longRequest = "A5 01 FD 50 03 01 00";
  for (int i = 0; i < 505; ++i) longRequest += " 00";
  EXPECT_EQ(ask(bidi, longRequest), kReplied);
  EXPECT_THAT(sizes, ElementsAre(1024, 0, 7, 512, 0));
}

TEST_F(UsbTalk, AlertsAreDeliveredUnasked) {
  begin();
  OpenConnection bidi(*module, printer(), "bidi", &client);
  device.send(endpoint::kPrintIn, hex(kAlert));
  EXPECT_THAT(client.waitFor(1), ElementsAre(kAlert));
}

TEST_F(UsbTalk, RepliesMayComeInPiecesAndAmongAlerts) {
  begin();
  OpenConnection bidi(*module, printer(), "bidi", &client);
  device.onOut = [&](std::uint8_t, std::span<const std::uint8_t> data, bool) {
    device.send(endpoint::kPrintIn, hex("A5 00 06 50 F3 01 00"));
    device.send(endpoint::kPrintIn, {});
    device.send(endpoint::kPrintIn, hex("00 01 A5 00"));
    device.send(endpoint::kPrintIn, hex("05 50 03 01 00 2A"));
    return Taken{data.size()};
  };
  EXPECT_EQ(ask(bidi), kReplied);
  EXPECT_THAT(client.waitFor(2), testing::UnorderedElementsAre(kAlert, kReply));
}

TEST_F(UsbTalk, WhatTheDeviceGetsWrongEndsWithACode) {
  set("Usb1ReadTimeout", kShortTimeout);
  begin();
  const struct {
    const char* what;
    std::function<void()> misbehave;
    ExchangeResult result;
  } kCases[] = {
      {"silence", [] {}, kNoReply},
      {"babble", [&] { device.send(endpoint::kPrintIn, Bytes(512, 0x20), -EOVERFLOW); }, {13, 13}},
      {"a stall and then the reply",
       [&] {
         device.halt(endpoint::kPrintIn);
         device.send(endpoint::kPrintIn, hex(kReply));
       },
       kReplied},
      {"garbage and then the reply",
       [&] {
         device.send(endpoint::kPrintIn, hex("00 01 02"));
         device.send(endpoint::kPrintIn, hex(kReply));
       },
       kReplied},
  };
  for (const auto& c : kCases) {
    OpenConnection bidi(*module, printer(), "bidi", &client);
    device.onOut = [&](std::uint8_t, std::span<const std::uint8_t> data, bool) {
      if (!data.empty()) c.misbehave();
      return Taken{data.size()};
    };
    EXPECT_EQ(ask(bidi), c.result) << c.what;
    answerWith(kReply);
    EXPECT_EQ(ask(bidi), kReplied) << "after " << c.what;
  }
}

TEST_F(UsbTalk, UnpluggingEndsEveryWaitAndTheNextUseFindsTheDeviceAgain) {
  begin();
  OpenConnection bidi(*module, printer(), "bidi", &client);
  std::atomic<bool> isAsked{false};
  device.onOut = [&](std::uint8_t, std::span<const std::uint8_t> data, bool) {
    isAsked = true;
    return Taken{data.size()};
  };
  std::thread unplugger([&] {
    EXPECT_TRUE(eventually([&] { return isAsked.load(); }));
    bed.unplug();
  });
  EXPECT_EQ(ask(bidi), kLost);
  unplugger.join();
  EXPECT_EQ(ask(bidi), (ExchangeResult{1167, 1167}));
  answerWith(kReply);
  bed.plug(device, "1-2");
  EXPECT_EQ(ask(bidi), kReplied);
}

TEST_F(UsbTalk, AScannerAnswersAndSendsPages) {
  begin();
  OpenConnection scan(*module, scanner(), "bidi", &client);
  ASSERT_EQ(scan.openCode(), 0u);
  constexpr char kStatus[] = "1B 53 53 00 00 00 00 00";
  answerWith(kStatus);
  EXPECT_EQ(ask(scan, "1B 53 51 00 00 00 00 00", visitor_name::kEscCommand).result, 0u);
}

TEST_F(UsbTalk, AHidsReportsAndEventsAreDelivered) {
  begin();
  OpenConnection alert(*module, hid(), "alert", &client);
  ASSERT_EQ(alert.openCode(), 0u);
  device.send(endpoint::kHidIn, hex("01 02 00 11 22"));
  device.send(endpoint::kHidIn, hex("02 08 00 05 00 00 00 07 00 00 00"));
  EXPECT_THAT(client.waitFor(2), ElementsAre("11 22", "event 5 7"));
  bed.unplug();
  EXPECT_THAT(client.waitFor(3).back(), "lost");
  EXPECT_EQ(visit(*module, *alert, visitor_name::kOpenHid, nullptr, &client), 1167u);
  bed.plug(device);
  EXPECT_EQ(visit(*module, *alert, visitor_name::kOpenHid, nullptr, &client), 0u);
  device.send(endpoint::kHidIn, hex("01 01 00 33"));
  EXPECT_THAT(client.waitFor(4).back(), "33");
}

TEST_F(UsbTalk, EachTransferOfAForeignHidIsAReport) {
  TestDevice panel(allInOne(0x04D8));
  bed.plug(panel, "1-2");
  begin();
  OpenConnection alert(*module, texts.back(), "alert", &client);
  ASSERT_EQ(numberOf(texts.back(), attribute::kVid), 0x04D8u);
  const std::string whole = toHex(Bytes(64, 0x11));  // as long as a packet
  for (const std::string& report : {std::string("01 02 03"), whole, std::string("FF")}) {
    panel.send(endpoint::kHidIn, hex(report));
  }
  EXPECT_THAT(client.waitFor(3), ElementsAre("01 02 03", whole, "FF"));
}

}  // namespace
}  // namespace qvn::test
