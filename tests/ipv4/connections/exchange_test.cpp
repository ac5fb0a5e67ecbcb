// Packet exchanges and alerts on the "bidi" connection, against the simulated printer with each of its faults
// and against a peer that sends what it likes.
#include <gmock/gmock.h>

#include "ipv4/connections/connection_test.h"
#include "support/simulator/simulator_process.h"

namespace qvn::test {
namespace {

using testing::ElementsAre;

constexpr char kLock[] = "A5 00 05 50 E0 82 02 01";
constexpr char kLocked[] = "A5 00 06 20 E0 82 02 01 00";
constexpr char kUnlock[] = "A5 00 05 50 E0 82 02 02";
constexpr char kUnlocked[] = "A5 00 05 20 E0 82 02 02";
constexpr char kCache[] = "A5 00 05 50 E0 81 00 FF";
constexpr char kStartJob[] = "A5 00 06 50 05 00 00 00 00";
constexpr char kPanelRegistration[] = "A5 00 05 50 E0 E1 03 01";
constexpr char kPanelAlert[] = "A5 00 05 20 F0 E1 00 00";
constexpr char kReset[] = "A5 00 05 20 FF 01 00 00";

class ExchangeTest : public ConnectionTest {
 protected:
  ExchangeResult ask(const OpenConnection& bidi, const char* request) {
    return exchange(*module, *bidi, device, request);
  }
};

class Exchange : public ExchangeTest {
 protected:
  std::string attributes() const { return attributeText(simulator.printPort(), simulator.bidiPort()); }
  SimulatorProcess simulator;
};

TEST_F(Exchange, DeliversTheReplyBeforeItReturns) {
  const OpenConnection bidi(*module, attributes(), "bidi");
  const Bytes request = hex(kLock);
  Data data(request.data(), static_cast<std::uint32_t>(request.size()));
  EXPECT_EQ(visit(*module, *bidi, "npaDataVisitor"), 87u) << "without data and device";
  EXPECT_EQ(visit(*module, *bidi, "npaDataVisitor", &data, &device), 0u);
  EXPECT_EQ(data.getRc(), 0u);
  EXPECT_EQ(data.getCount(), 8u);
  EXPECT_EQ(data.getLength(), 8u) << "the request stays to compare replies with";
  EXPECT_THAT(device.deliveries(), ElementsAre(kLocked));
  EXPECT_TRUE(device.hasDeliveredHere());
}

TEST_F(Exchange, CarriesThePacketsOfAPrintConnectionOnTheBidiOne) {
  device.setAttributes(attributes());
  const OpenConnection print(*module, attributes(), "print");
  EXPECT_EQ(ask(print, kStartJob), (ExchangeResult{1229, 1229})) << "the printer is not open";
  const OpenConnection bidi(*module, attributes(), "bidi");
  EXPECT_EQ(ask(print, kStartJob), kReplied);
  EXPECT_EQ(device.deliveries().size(), 1u);
}

TEST_F(Exchange, RefusesWhatIsNoPacket) {
  const OpenConnection bidi(*module, attributes(), "bidi");
  for (const char* request : {"", "A5", "A5 00 02 50", "A5 00 03 50 01", "A4 00 02 50 01"}) {
    EXPECT_EQ(ask(bidi, request), (ExchangeResult{87, 87})) << request;
  }
  bidi->close();
  EXPECT_EQ(ask(bidi, kLock), (ExchangeResult{1229, 1229}));
}

TEST_F(Exchange, MeetsEachFaultWithACodeAndGoesOn) {
  setSetting("ReadTimeout", kShortTimeout);
  const struct {
    const char* fault;
    ExchangeResult result;
    const char* reply;
  } kCases[] = {
      {"drop-reply=lock:1", kNoReply, nullptr},     {"corrupt-reply=lock:1", kNoReply, nullptr},
      {"misframe-reply=lock:1", kNoReply, nullptr}, {"delay-reply=20:lock:1", kReplied, kLocked},
      {"double-reply=lock:1", kReplied, kLocked},   {"reject=lock:1", kReplied, "A5 00 03 A0 E0 82"},
      {"close-bidi=lock:1", kLost, nullptr},
  };
  const OpenConnection bidi(*module, attributes(), "bidi");
  std::vector<std::string> expected;
  for (const auto& c : kCases) {
    simulator.command(std::string("fault ") + c.fault);
    EXPECT_EQ(ask(bidi, kLock), c.result) << c.fault;
    if (c.reply != nullptr) expected.push_back(c.reply);
    EXPECT_EQ(ask(bidi, kLock), kReplied) << "after " << c.fault;
    expected.push_back(kLocked);
    EXPECT_EQ(ask(bidi, kUnlock), kReplied) << "after " << c.fault;
    expected.push_back(kUnlocked);
  }
  EXPECT_EQ(device.deliveries(), expected);
}

TEST_F(Exchange, NeverTakesAnotherRequestsReply) {
  setSetting("ReadTimeout", kShortTimeout);
  const OpenConnection bidi(*module, attributes(), "bidi");
  // The replies to these commands differ in the job's number.
  simulator.command("fault double-reply=start-job:1");
  simulator.command("fault late-reply=300:start-job:1");  // the doubled one, after the time-out
  EXPECT_EQ(ask(bidi, kStartJob), kNoReply);
  EXPECT_EQ(ask(bidi, kStartJob), kReplied);
  simulator.command("fault double-reply=start-job:1");
  EXPECT_EQ(ask(bidi, kStartJob), kReplied);
  EXPECT_EQ(ask(bidi, kStartJob), kReplied);
  const std::string started = "A5 00 06 20 05 00 00 00 0";
  EXPECT_THAT(device.deliveries(), ElementsAre(started + "2", started + "3", started + "4"));
}

TEST_F(Exchange, LetsAnAlertsReceiverExchangePackets) {
  const OpenConnection bidi(*module, attributes(), "bidi");
  std::atomic<int> replies{0};
  device.onDelivery = [&](const std::string& packet) {
    if (packet == kReset && ask(bidi, kCache) == kReplied) ++replies;
  };
  EXPECT_EQ(ask(bidi, kLock), kReplied);
  for (int i = 0; i < 3; ++i) simulator.command("power-on-reset");
  EXPECT_EQ(device.waitFor(7).size(), 7u);  // one lock, three times cache and alert
  EXPECT_EQ(replies, 3);
  EXPECT_EQ(device.deliveries().back(), kReset);
  EXPECT_NE(device.deliveringThread(), std::this_thread::get_id());
}

TEST_F(Exchange, BringsAlertsAsLongAsTheConnectionIsTagged) {
  Connectable* bidi = module->connections.getConnection(attributes(), "bidi");
  ASSERT_EQ(bidi->open(), 0u);
  EXPECT_EQ(exchange(*module, *bidi, device, kLock), kReplied);
  bidi->setTag(1);
  bidi->close();
  simulator.command("power-on-reset");
  EXPECT_EQ(device.waitFor(2).size(), 2u);
  EXPECT_EQ(bidi->open(), 0u) << "on the same session";
  EXPECT_EQ(exchange(*module, *bidi, device, kUnlock), kReplied);
  bidi->close();
  bidi->setTag(0);
  module->connections.releaseConnection(bidi);
  // The printer notices the end: the next host does not find it locked for ever.
  Stream host = Stream::connect(simulator.address(), simulator.bidiPort());
  EXPECT_EQ(host.ask(kLock), kLocked);
  simulator.command("power-on-reset");
  EXPECT_EQ(toHex(host.receivePacket()), kReset);
  EXPECT_EQ(device.deliveries().size(), 3u);
}

TEST_F(Exchange, RegistersForAlertsAgainWhenItConnectsAgain) {
  const OpenConnection bidi(*module, attributes(), "bidi");
  EXPECT_EQ(ask(bidi, kPanelRegistration), kReplied);
  simulator.command("fault close-bidi=lock:1");
  EXPECT_EQ(ask(bidi, kLock), kLost);
  EXPECT_EQ(ask(bidi, kLock), kReplied);
  simulator.command(std::string("alert ") + kPanelAlert);
  EXPECT_EQ(device.waitFor(4).back(), kPanelAlert) << "behind the reply to the second registration";
}

TEST_F(Exchange, MayBeClosedFromInsideAnAlert) {
  Connectable* bidi = module->connections.getConnection(attributes(), "bidi");
  ASSERT_EQ(bidi->open(), 0u);
  std::atomic<bool> exchanged{false};
  device.onDelivery = [&](const std::string& packet) {
    if (packet != kReset || !exchanged) return;
    bidi->close();
    module->connections.releaseConnection(bidi);
  };
  EXPECT_EQ(exchange(*module, *bidi, device, kLock), kReplied);
  exchanged = true;
  simulator.command("power-on-reset");
  EXPECT_EQ(device.waitFor(2).size(), 2u);
}

TEST_F(Exchange, ServesSeveralThreadsInTurn) {
  const OpenConnection bidi(*module, attributes(), "bidi");
  askFromThreads(*bidi, {kLock, kCache, kPanelRegistration, kStartJob}, visitor_name::kNpaData);
}

// A peer of the test's own in place of the printer.
class HostilePeer : public ExchangeTest {
 protected:
  std::string attributes() const { return attributeText(1, listener.port()); }
  Listener listener;
};

TEST_F(HostilePeer, GetsACodeWithinTheTimeoutWhateverItSends) {
  setSetting("ReadTimeout", kShortTimeout);
  struct Case {
    const char* name;
    Bytes answer;
    ExchangeResult result;
  };
  const Bytes reply = hex(kUnlocked);
  Bytes flood;
  for (int i = 0; i < 20000; ++i) flood = std::move(flood) + hex("A5 00 02 20 77");
  const Case kCases[] = {
      {"nothing", {}, kNoReply},
      {"noise, then the reply", repeated(5000, 0x5A) + reply, kReplied},
      {"half a packet", hex("A5 00 05 20 E0"), kNoReply},
      {"too short a length", hex("A5 00 00 A5 00 01") + reply, kReplied},
      {"the longest length", hex("A5 FF FF 20 E0 82 02 02"), kNoReply},
      {"another reply", hex("A5 00 03 20 01 00"), kNoReply},
      {"alerts only", hex(kPanelAlert) + hex(kReset), kNoReply},
      {"a flood of short packets, then the reply", flood + reply, kReplied},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.name);
    const OpenConnection bidi(*module, attributes(), "bidi");
    ASSERT_EQ(bidi.openCode(), 0u);
    Stream peer = listener.accept();
    std::thread answering([&] {
      peer.receivePacket();
      peer.send(c.answer);
    });
    EXPECT_EQ(ask(bidi, kUnlock), c.result);
    answering.join();
  }
}

TEST_F(HostilePeer, IsNotMissedWhenItEndsTheConnection) {
  for (const bool reset : {false, true}) {
    const OpenConnection bidi(*module, attributes(), "bidi");
    Stream peer = listener.accept();
    std::thread ending([&] {
      peer.receivePacket();
      reset ? peer.reset() : peer.close();
    });
    EXPECT_EQ(ask(bidi, kUnlock), kLost) << "reset " << reset;
    ending.join();
  }
  // Gone for good: connecting again is refused.
  std::optional<Listener> shortLived(std::in_place);
  const OpenConnection bidi(*module, attributeText(1, shortLived->port()), "bidi");
  shortLived->accept().close();
  shortLived.reset();
  std::optional<ExchangeResult> result;
  for (int tries = 0; tries < 100 && (!result || *result == kLost); ++tries) result = ask(bidi, kUnlock);
  EXPECT_EQ(*result, (ExchangeResult{1225, 1225}));
}

TEST_F(HostilePeer, MayEndTheConnectionWithEveryReply) {
  const OpenConnection bidi(*module, attributes(), "bidi");
  for (int i = 0; i < 50; ++i) {
    std::thread answering([&] {
      Stream peer = listener.accept();
      peer.receivePacket();
      peer.send(hex(kUnlocked));
    });
    EXPECT_EQ(ask(bidi, kUnlock), kReplied) << i;
    answering.join();
  }
}

TEST_F(HostilePeer, CannotAnswerBeforeItIsAsked) {
  const OpenConnection bidi(*module, attributes(), "bidi");
  Stream peer = listener.accept();
  peer.send(hex("A5 00 06 20 05 00 00 00 63"));
  std::thread answering([&] {
    peer.receivePacket();
    peer.send(hex("A5 00 06 20 05 00 00 00 01"));
  });
  EXPECT_EQ(ask(bidi, kStartJob), kReplied);
  answering.join();
  EXPECT_EQ(device.deliveries().at(0), "A5 00 06 20 05 00 00 00 01");
}

}  // namespace
}  // namespace qvn::test
