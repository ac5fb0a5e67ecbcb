// The "bidi" connection of a scanner, against a peer that plays the device.
#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <future>
#include <memory>

#include "ipv4/connections/connection_test.h"
#include "ipv4/connections/open_part.h"

namespace qvn::test {
namespace {

using testing::ElementsAre;
using Deliveries = std::vector<std::string>;

constexpr char kDpi[] = "1B 53 44 2C 01 2C 01 00";
constexpr char kColor[] = "1B 53 43 02 00 00 00 00";
constexpr char kVersion[] = "1B 53 56 00 00 00 00 00";
constexpr char kGo[] = "1B 53 47 00 00 00 00 00";
constexpr char kAbort[] = "1B 53 41 00 00 00 00 00";
constexpr char kOther[] = "1B 58 59 5A 00 00 80 00";
constexpr char kOtherReply[] = "1B 58 59 5A 00 00 00 00";
constexpr char kStatus[] = "1B 53 53 00 00 00 00 00";
constexpr char kBusy[] = "1B 53 53 01 00 00 00 00";
constexpr char kVersionReply[] = "1B 73 76 02 00 00 00 00 41 0A";
constexpr char kBlock[] = "1B 73 64 03 00 01 00 00 1B 53 53";  // a payload that looks like a status

class Scanner : public ConnectionTest {
 protected:
  std::string attributes() const { return partText("CpdScanner", listener.port()); }

  ExchangeResult ask(Connectable& connection, const char* request) {
    return exchange(*module, connection, device, request, visitor_name::kEscCommand);
  }

  // The code of a write, all or nothing of which goes out.
  static std::uint32_t write(Connectable& connection, const char* command) {
    const Bytes bytes = hex(command);
    const auto length = static_cast<std::uint32_t>(bytes.size());
    Data data(bytes.data(), length);
    connection.write(data);
    EXPECT_EQ(data.getCount(), data.getRc() == 0 ? length : 0);
    EXPECT_EQ(data.getLength(), length - data.getCount());
    return data.getRc();
  }

  // Takes the request and answers it.
  static std::future<std::string> answering(Stream& peer, const Bytes& answer) {
    return std::async(std::launch::async, [&peer, answer] {
      const Bytes request = peer.receive(8);
      peer.send(answer);
      return toHex(request);
    });
  }

  Listener listener;
};

TEST_F(Scanner, GetsTheReplyAndTellsItFromWhatElseComes) {
  setSetting("ReadTimeout", kShortTimeout);
  const struct {
    const char* request;
    std::string answer;
    ExchangeResult result;
    Deliveries deliveries;
    bool byAsker = false;  // on the asking thread, which delivers nothing behind what it did not ask for
  } kCases[] = {
      {kDpi, kBusy, kReplied, {kBusy}, true},
      {kVersion, kVersionReply, kReplied, {kVersionReply}, true},
      {kOther, kOtherReply, kReplied, {kOtherReply}, true},
      {kDpi, std::string(kBlock) + " " + kStatus, kReplied, {kBlock, kStatus}},
      {kVersion, std::string(kStatus) + " " + kVersionReply, kReplied, {kStatus, kVersionReply}},
      {kDpi, std::string("00 53 1B FF 53 53 ") + kStatus, kReplied, {kStatus}, true},
      {kDpi, std::string(kStatus) + " " + kBusy, kReplied, {kStatus}, true},
      {kVersion, kStatus, kNoReply, {kStatus}},
      {kDpi, "", kNoReply, {}},
      {kDpi, "1B 53 53", kNoReply, {}},
      {kVersion, "1B 73 76 FF FF 00 00 00 41", kNoReply, {}},
      {"1B 43 53 53 01 00 00 00", kBusy, kNoReply, {kBusy}},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(std::string(c.request) + " answered by " + c.answer);
    LoggingDevice scanner;
    OpenPart bidi(*module, attributes(), listener, scanner);
    auto request = answering(*bidi.peer, hex(c.answer));
    EXPECT_EQ(exchange(*module, *bidi, scanner, c.request, visitor_name::kEscCommand), c.result);
    EXPECT_EQ(scanner.deliveries(), c.deliveries);
    EXPECT_EQ(scanner.hasDeliveredHere(), c.byAsker);
    EXPECT_EQ(request.get(), c.request);
  }
}

TEST_F(Scanner, DoesNotWaitForAReplyThatIsNotToCome) {
  setSetting("ReadTimeout", 3600000);  // the test's own limit is shorter
  OpenPart bidi(*module, attributes(), listener, device);
  for (const char* request : {kAbort, "1B 58 59 5A 00 00 00 00", "41", ""}) {
    EXPECT_EQ(ask(*bidi, request), kReplied) << request;
    EXPECT_EQ(write(*bidi, request), 0u) << request;
    const Bytes bytes = hex(request);
    EXPECT_EQ(bidi.peer->receive(2 * bytes.size()), bytes + bytes);
  }
  EXPECT_EQ(ask(*bidi, kGo), kReplied);
  EXPECT_EQ(toHex(bidi.peer->receive(8)), kGo);
  EXPECT_THAT(device.deliveries(), ElementsAre());
}

TEST_F(Scanner, NeverTakesAnotherRequestsReply) {
  setSetting("ReadTimeout", kShortTimeout);
  OpenPart bidi(*module, attributes(), listener, device);
  EXPECT_EQ(ask(*bidi, kVersion), kNoReply);
  bidi.peer->receive(8);
  // A reply of another kind is told apart, however late.
  auto answered = answering(*bidi.peer, hex(kVersionReply) + hex(kStatus));
  EXPECT_EQ(ask(*bidi, kDpi), kReplied);
  answered.get();
  EXPECT_THAT(device.deliveries(), ElementsAre(kStatus));
  // One of the same kind is not; what is sent next goes out on a new connection, whether it is to be answered
  // or begins a page, which ends with a status.
  for (const bool begins : {false, true}) {
    EXPECT_EQ(ask(*bidi, kDpi), kNoReply);
    bidi.peer->receive(8);
    auto next = std::async(std::launch::async, [&] {
      Stream peer = listener.accept();
      const Bytes request = peer.receive(8);
      peer.send(hex(kStatus));
      EXPECT_EQ(toHex(request), begins ? kGo : kColor);
      return peer;
    });
    if (begins) {
      EXPECT_EQ(write(*bidi, kGo), 0u);
    } else {
      EXPECT_EQ(ask(*bidi, kColor), kReplied);
    }
    Stream peer = next.get();
    EXPECT_TRUE(bidi.peer->isEnded());
    bidi.peer.emplace(std::move(peer));
  }
  EXPECT_THAT(device.waitFor(3), ElementsAre(kStatus, kStatus, kStatus));
}

TEST_F(Scanner, NeverTakesAPagesStatusForAReply) {
  OpenPart bidi(*module, attributes(), listener, device);
  const auto onANewConnection = [&](const std::function<void()>& send) {
    auto accepted = std::async(std::launch::async, [&] {
      Stream peer = listener.accept();
      peer.receive(8);
      peer.send(hex(kStatus));
      return peer;
    });
    send();
    Stream peer = accepted.get();
    EXPECT_TRUE(bidi.peer->isEnded());
    bidi.peer.emplace(std::move(peer));
  };
  EXPECT_EQ(write(*bidi, kGo), 0u);
  EXPECT_EQ(write(*bidi, kAbort), 0u) << "which ends the page where it comes from";
  EXPECT_EQ(toHex(bidi.peer->receive(16)), std::string(kGo) + " " + kAbort);
  auto answered = answering(*bidi.peer, hex(kVersionReply));
  EXPECT_EQ(ask(*bidi, kVersion), kReplied) << "which no status can be taken for";
  answered.get();
  onANewConnection([&] { EXPECT_EQ(ask(*bidi, kDpi), kReplied); });
  EXPECT_EQ(write(*bidi, kGo), 0u);
  onANewConnection([&] { EXPECT_EQ(write(*bidi, kGo), 0u); });
  device.waitFor(3);
  answered = answering(*bidi.peer, hex(kBusy));
  EXPECT_EQ(ask(*bidi, kDpi), kReplied) << "the page has ended";
  answered.get();
  EXPECT_THAT(device.deliveries(), ElementsAre(kVersionReply, kStatus, kStatus, kBusy));
}

TEST_F(Scanner, TakesAReplyThatComesTooEarlyOrTwiceForNone) {
  OpenPart bidi(*module, attributes(), listener, device);
  bidi.peer->send(hex(kBusy));  // unasked, if anything
  Deliveries replies;
  for (const char* request : {kDpi, kColor, kDpi, kColor}) {
    replies.push_back("1B 53 53 02 00 00 00 0" + std::to_string(replies.size()));
    auto answered = answering(*bidi.peer, hex(replies.back()) + hex(replies.back()));
    EXPECT_EQ(ask(*bidi, request), kReplied);
    answered.get();
    Deliveries delivered = device.deliveries();
    std::erase(delivered, kBusy);
    EXPECT_EQ(delivered, replies);
  }
}

TEST_F(Scanner, DeliversThePageItWasAskedFor) {
  OpenPart bidi(*module, attributes(), listener, device);
  auto answered = answering(*bidi.peer, hex(kStatus) + hex(kStatus));
  EXPECT_EQ(ask(*bidi, kDpi), kReplied);
  answered.get();
  EXPECT_EQ(write(*bidi, kGo), 0u) << "which the second copy of the status does not end";
  bidi.peer->receive(8);
  const Bytes page = hex(kBlock) + hex(kOtherReply) + hex(kStatus);
  for (const std::uint8_t byte : page) bidi.peer->send({byte});  // split at every byte
  device.waitFor(4);
  Bytes pages;
  Deliveries expected = {kStatus, kBlock, kOtherReply, kStatus};
  for (int i = 0; i < 1000; ++i) {
    pages = std::move(pages) + page;
    expected.insert(expected.end(), {kBlock, kOtherReply, kStatus});
  }
  bidi.peer->send(pages);  // many at once
  EXPECT_EQ(device.waitFor(expected.size()), expected);
}

TEST_F(Scanner, DeliversBlocksOfEveryLengthWhole) {
  OpenPart bidi(*module, attributes(), listener, device);
  std::size_t delivered = 0;
  std::atomic<bool> whole{true};
  device.onDelivery = [&](const std::string& block) {
    const std::size_t payload = delivered++ * 257;
    whole = whole && block.size() == (payload + 8) * 3 - 1;
  };
  auto sent = std::async(std::launch::async, [&] {
    for (std::size_t payload = 0; payload <= 65535; payload += 257) {
      Bytes header = hex("1B 73 64 00 00 01 00 00");
      header[3] = static_cast<std::uint8_t>(payload);
      header[4] = static_cast<std::uint8_t>(payload >> 8);
      bidi.peer->send(header + repeated(payload, 0x1B));
    }
  });
  device.waitFor(256);
  sent.get();
  EXPECT_EQ(device.deliveries().size(), 256u);
  EXPECT_TRUE(whole);
}

TEST_F(Scanner, GetsBehindABlockThatPromisesTooMuch) {
  OpenPart bidi(*module, attributes(), listener, device);
  bidi.peer->send(hex("1B 73 64 FF 00 01 00 00 1B 41 42 43 00 00 00 00") + hex(kStatus));
  EXPECT_THAT(device.waitFor(1), ElementsAre(kStatus));
}

TEST_F(Scanner, HearsOfALostConnectionOnceAndBehindAllThatCame) {
  OpenPart bidi(*module, attributes(), listener, device);
  for (const bool reset : {false, true}) {
    const std::size_t before = device.deliveries().size();
    EXPECT_EQ(write(*bidi, kGo), 0u);
    bidi.peer->receive(8);
    bidi.peer->send(hex(kBlock) + hex(kBlock) + hex("1B 73 64 FF FF 00"));
    device.waitFor(before + 2);
    reset ? bidi.peer->reset() : bidi.peer->close();
    const Deliveries all = device.waitFor(before + 3);
    EXPECT_EQ(Deliveries(all.begin() + static_cast<std::ptrdiff_t>(before), all.end()),
              (Deliveries{kBlock, kBlock, "lost"}));
    // What is sent next goes to a new connection.
    auto accepted = std::async(std::launch::async, [&] { return listener.accept(); });
    EXPECT_EQ(write(*bidi, kAbort), 0u);
    bidi.peer.emplace(accepted.get());
    EXPECT_EQ(toHex(bidi.peer->receive(8)), kAbort);
  }
  // During an exchange.
  auto ending = std::async(std::launch::async, [&] {
    bidi.peer->receive(8);
    bidi.peer->close();
  });
  EXPECT_EQ(ask(*bidi, kDpi), kLost);
  ending.get();
  EXPECT_EQ(device.waitFor(7).size(), 7u);
}

TEST_F(Scanner, IsNotToldOfAConnectionThatIsClosedHere) {
  {
    OpenPart bidi(*module, attributes(), listener, device);
    bidi.peer->send(hex(kBlock));
    device.waitFor(1);
  }
  module.reset();  // its threads have ended
  EXPECT_THAT(device.deliveries(), ElementsAre(kBlock));
}

TEST_F(Scanner, CanBeClosedWhileItDelivers) {
  for (const bool fromInside : {false, true}) {
    LoggingDevice scanner;
    std::promise<void> delivering;
    std::promise<void> closed;
    std::optional<OpenPart> bidi(std::in_place, *module, attributes(), listener, scanner);
    scanner.onDelivery = [&](const std::string&) {
      if (fromInside) (*bidi)->close();
      delivering.set_value();
      closed.get_future().wait();
    };
    bidi->peer->send(hex(kBlock) + hex(kBlock) + hex(kStatus));
    delivering.get_future().wait();
    Stream peer = std::move(*bidi->peer);
    bidi.reset();  // does not wait for the delivery
    closed.set_value();
    EXPECT_TRUE(peer.isEnded());
    EXPECT_THAT(scanner.waitFor(1), ElementsAre(kBlock));
  }
}

TEST_F(Scanner, MayGoBeforeItsConnection) {
  auto scanner = std::make_unique<LoggingDevice>();
  OpenPart bidi(*module, attributes(), listener, *scanner);
  scanner.reset();
  bidi.peer->send(hex(kStatus));
  // The next one gets what is its own.
  bidi->setChild(0, &device);
  bidi.peer->send(hex(kBlock));
  if (device.waitFor(1).back() == kStatus) device.waitFor(2);  // it was read only now
  EXPECT_EQ(device.deliveries().back(), kBlock);
  bidi->setChild(0, nullptr);
  bidi.peer->send(hex(kBusy));
  auto answered = answering(*bidi.peer, hex(kStatus));
  EXPECT_EQ(ask(*bidi, kDpi), kReplied) << "a visitor's device takes its place";
  answered.get();
  EXPECT_EQ(device.deliveries().back(), kStatus);
}

TEST_F(Scanner, AnswersACodeWhenNothingCanBeSent) {
  setSetting("NpaWriteTimeout", 50);
  Connectable* unopened = module->connections.getConnection(attributes(), "bidi");
  EXPECT_EQ(write(*unopened, kGo), 1229u);
  EXPECT_EQ(ask(*unopened, kDpi), (ExchangeResult{1229, 1229}));
  EXPECT_EQ(visit(*module, *unopened, visitor_name::kEscCommand), 87u) << "without data and device";
  module->connections.releaseConnection(unopened);

  // A device that never reads takes what the system holds for it.
  OpenPart bidi(*module, attributes(), listener, device);
  const Bytes much = repeated(std::size_t{64} << 20, 0);
  Data data(much.data(), static_cast<std::uint32_t>(much.size()));
  bidi->write(data);
  EXPECT_EQ(data.getRc(), 1460u);
  EXPECT_GT(data.getCount(), 0u);
  EXPECT_EQ(data.getLength(), much.size() - data.getCount());
  EXPECT_EQ(device.waitFor(1).back(), "lost") << "half a command leaves nothing to go on with";
}

TEST_F(Scanner, ServesSeveralThreadsInTurn) {
  OpenPart bidi(*module, attributes(), listener, device);
  auto answering = std::async(std::launch::async, [&] {
    for (int i = 0; i < 200; ++i) {
      const std::string request = toHex(bidi.peer->receive(8));
      bidi.peer->send(hex(request == kVersion ? kVersionReply : request == kOther ? kOtherReply : kStatus));
    }
  });
  askFromThreads(*bidi, {kDpi, kColor, kVersion, kOther}, visitor_name::kEscCommand);
  answering.get();
}

}  // namespace
}  // namespace qvn::test
