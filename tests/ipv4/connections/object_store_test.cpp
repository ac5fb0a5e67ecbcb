// The "bidi" connection of a Bpd scanner, against a peer that plays the device.
#include <gmock/gmock.h>

#include <future>

#include "ipv4/connections/connection_test.h"
#include "ipv4/connections/open_part.h"

namespace qvn::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Deliveries = std::vector<std::string>;

constexpr std::uint32_t kForEver = 3600000;  // the test's own limit is shorter
constexpr ExchangeResult kCancelled{1236, 1236};

std::string request(int id) {
  return "<?xml version=\"1.0\"?>\r\n<method name=\"callMethod\" requestID=\"" + std::to_string(id) +
         "\">\r\n</method>\r\n";
}

std::string reply(int id, const std::string& root = "response") {
  return "<?xml version=\"1.0\"?><" + root + " requestID=\"" + std::to_string(id) + "\"></" + root + ">";
}

Bytes block(const std::string& payload) {
  Bytes header = hex("42 4B 01 00 00 00 00 00");
  for (std::size_t i = 0; i < 4; ++i) header[7 - i] = static_cast<std::uint8_t>(payload.size() >> 8 * i);
  return header + bytesOf(payload);
}

// As the device's log has it.
std::string noted(const std::string& payload) { return toHex(bytesOf(payload)); }

// One exchange, as the library carries it out.
class Exchange {
 public:
  Exchange(TransportModule& module, Device& device, const std::string& document)
      : module_(module), data_(document), visitor_(module.visitors.getVisitor("objectStoreDataVisitor")) {
    visitor_->setData(data_);
    visitor_->setDevice(device);
  }
  ~Exchange() { module_.visitors.releaseVisitor(visitor_); }
  Exchange(const Exchange&) = delete;
  Exchange& operator=(const Exchange&) = delete;

  ExchangeResult run(Connectable& connection) {
    connection.accept(*visitor_);
    EXPECT_EQ(data_.getCount(), visitor_->getResult() == 0 ? data_.getLength() : 0);
    return {visitor_->getResult(), data_.getRc()};
  }
  std::future<ExchangeResult> start(Connectable& connection) {
    return std::async(std::launch::async, [this, &connection] { return run(connection); });
  }
  void cancel() { visitor_->cancel(); }

 private:
  TransportModule& module_;
  Data data_;
  Visitor* const visitor_;
};

class ObjectStore : public ConnectionTest {
 protected:
  ObjectStore() { setSetting("ReadTimeout", kForEver); }

  std::string attributes() const { return partText("BpdScanner", listener.port()); }

  ExchangeResult ask(Connectable& connection, const std::string& document) {
    return Exchange(*module, device, document).run(connection);
  }

  // Takes the request with that id and answers it.
  static std::future<void> answering(Stream& peer, int id, const Bytes& answer) {
    return std::async(std::launch::async, [&peer, id, answer] {
      const Bytes asked = block(request(id));
      EXPECT_EQ(peer.receive(asked.size()), asked);
      peer.send(answer);
    });
  }

  Listener listener;
};

TEST_F(ObjectStore, GetsTheReplyAndTellsItFromWhatElseComes) {
  setSetting("ReadTimeout", kShortTimeout);
  const std::string framed = std::string("\xAA\0\0\0\0\0\0\xFF", 8) + reply(7);
  const std::string page = "<Scan.Data>" + reply(7);
  const std::string notification = reply(7, "method");
  const Bytes failedRead = hex("42 4B 02 00 00 00 00 04 00 00 00 05");
  const struct {
    Bytes answer;
    ExchangeResult result;
    Deliveries deliveries;
    bool byAsker = false;  // on the asking thread, which delivers nothing behind what it did not ask for
  } kCases[] = {
      {block(framed), kReplied, {noted(framed)}, true},
      {block(reply(7, "exception")), kReplied, {noted(reply(7, "exception"))}, true},
      {block(page) + failedRead + block(reply(8)) + block(reply(7)),
       kReplied,
       {noted(page), "code 5", noted(reply(8)), noted(reply(7))}},
      {block(page) + block(notification) + block(reply(70)) + block(""),
       kNoReply,
       {noted(page), noted(notification), noted(reply(70)), ""}},
      {failedRead, kNoReply, {"code 5"}},
      {{}, kNoReply, {}},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(testing::PrintToString(c.deliveries));
    LoggingDevice scanner;
    OpenPart bidi(*module, attributes(), listener, scanner);
    auto answered = answering(*bidi.peer, 7, c.answer);
    EXPECT_EQ(Exchange(*module, scanner, request(7)).run(*bidi), c.result);
    EXPECT_EQ(scanner.deliveries(), c.deliveries);
    EXPECT_EQ(scanner.hasDeliveredHere(), c.byAsker);
    answered.get();
  }
}

TEST_F(ObjectStore, LetsManyExchangesWaitAtTheSameTime) {
  constexpr int kCount = 8;
  OpenPart bidi(*module, attributes(), listener, device);
  std::vector<std::future<ExchangeResult>> results;
  for (int id = 0; id < kCount; ++id) {
    results.push_back(std::async(std::launch::async, [&, id] { return ask(*bidi, request(id)); }));
  }
  bidi.peer->receive(kCount * block(request(0)).size());
  for (int id = kCount - 1; id >= 0; --id) {
    bidi.peer->send(block(reply(id)));
    EXPECT_EQ(results[static_cast<std::size_t>(id)].get(), kReplied);
    EXPECT_EQ(device.deliveries().back(), noted(reply(id)));
  }
}

TEST_F(ObjectStore, DeliversALateReplyAndGoesOn) {
  setSetting("ReadTimeout", kShortTimeout);
  OpenPart bidi(*module, attributes(), listener, device);
  EXPECT_EQ(ask(*bidi, request(1)), kNoReply);
  bidi.peer->receive(block(request(1)).size());
  auto answered = answering(*bidi.peer, 2, block(reply(1)) + block(reply(2)));
  EXPECT_EQ(ask(*bidi, request(2)), kReplied);
  answered.get();
  EXPECT_THAT(device.deliveries(), ElementsAre(noted(reply(1)), noted(reply(2))));
}

TEST_F(ObjectStore, WaitsForTheEndOfADeliveryAsLongAsItTakes) {
  setSetting("ReadTimeout", kShortTimeout);
  OpenPart bidi(*module, attributes(), listener, device);
  Exchange asking(*module, device, request(1));
  auto result = asking.start(*bidi);
  device.onDelivery = [&](const std::string&) {
    EXPECT_EQ(result.wait_for(std::chrono::milliseconds(2 * kShortTimeout)), std::future_status::timeout);
  };
  answering(*bidi.peer, 1, block(reply(1))).get();
  EXPECT_EQ(result.get(), kReplied);
}

TEST_F(ObjectStore, WaitsForTheRestOfABlockAsLongAsItTakes) {
  setSetting("ReadTimeout", 600);  // longer than other channels wait
  OpenPart bidi(*module, attributes(), listener, device);
  const Bytes page = block("<Scan.Data>line");
  bidi.peer->send(Bytes(page.begin(), page.end() - 4));
  EXPECT_EQ(ask(*bidi, request(1)), kNoReply);
  for (auto at = page.end() - 4; at != page.end(); ++at) bidi.peer->send({*at});
  EXPECT_THAT(device.waitFor(1), ElementsAre(noted("<Scan.Data>line")));
}

TEST_F(ObjectStore, DeliversBlocksOfEveryLengthWhole) {
  OpenPart bidi(*module, attributes(), listener, device);
  std::vector<std::string> pages;
  for (const std::size_t length : {0u, 1u, 4096u, 65535u, 65536u, 131071u, 131072u}) {
    pages.emplace_back(length, static_cast<char>('A' + pages.size()));
  }
  auto sent = std::async(std::launch::async, [&] {
    for (const std::string& page : pages) bidi.peer->send(block(page));
  });
  const Deliveries blocks = device.waitFor(pages.size());
  sent.get();
  ASSERT_EQ(blocks.size(), pages.size());
  for (std::size_t i = 0; i < pages.size(); ++i) {
    EXPECT_TRUE(blocks[i] == noted(pages[i])) << pages[i].size() << " bytes";
  }
}

TEST_F(ObjectStore, CanBeCancelledAtAnyTime) {
  OpenPart bidi(*module, attributes(), listener, device);
  // Before it is sent.
  Exchange early(*module, device, request(1));
  early.cancel();
  EXPECT_EQ(early.run(*bidi), kCancelled);
  // While it waits; others go on to wait.
  Exchange waiting(*module, device, request(2));
  Exchange other(*module, device, request(3));
  auto cancelled = waiting.start(*bidi);
  EXPECT_EQ(bidi.peer->receive(block(request(2)).size()), block(request(2))) << "the first one was not sent";
  auto replied = other.start(*bidi);
  bidi.peer->receive(block(request(3)).size());
  waiting.cancel();
  EXPECT_EQ(cancelled.get(), kCancelled);
  bidi.peer->send(block(reply(2)) + block(reply(3)));
  EXPECT_EQ(replied.get(), kReplied);
  other.cancel();
  EXPECT_THAT(device.deliveries(), ElementsAre(noted(reply(2)), noted(reply(3))));
  // By whoever gets its reply, behind something that came unasked, and waits for its end.
  std::optional<Exchange> delivering(std::in_place, *module, device, request(4));
  auto result = delivering->start(*bidi);
  std::promise<ExchangeResult> seen;
  device.onDelivery = [&](const std::string& delivery) {
    if (delivery != noted(reply(4))) return;
    delivering->cancel();
    const ExchangeResult ended = result.get();
    delivering.reset();
    seen.set_value(ended);
  };
  bidi.peer->receive(block(request(4)).size());
  bidi.peer->send(block("<Job.Start>") + block(reply(4)));
  EXPECT_EQ(seen.get_future().get(), kCancelled);
  EXPECT_EQ(device.waitFor(4).size(), 4u);
  // By whoever gets it on the thread that waits.
  Exchange own(*module, device, request(6));
  device.onDelivery = [&](const std::string&) { own.cancel(); };
  auto ownAnswered = answering(*bidi.peer, 6, block(reply(6)));
  EXPECT_EQ(own.run(*bidi), kCancelled);
  ownAnswered.get();
  device.onDelivery = nullptr;
  auto answered = answering(*bidi.peer, 5, block(reply(5)));
  EXPECT_EQ(ask(*bidi, request(5)), kReplied);
  answered.get();
}

TEST_F(ObjectStore, EndsAllExchangesWithTheirConnection) {
  enum class By { End, Reset, WrongHeader, Close };
  const struct {
    By by;
    std::uint32_t code;
    Deliveries deliveries;
  } kCases[] = {
      {By::End, 64, {noted("<Job.Start>"), "code 64", "lost"}},
      {By::Reset, 64, {noted("<Job.Start>"), "code 64", "lost"}},
      {By::WrongHeader, 13, {noted("<Job.Start>"), "code 13", "lost"}},
      {By::Close, 1236, {noted("<Job.Start>")}},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.code);
    LoggingDevice scanner;
    std::optional<OpenPart> bidi(std::in_place, *module, attributes(), listener, scanner);
    Exchange first(*module, scanner, request(1));
    Exchange second(*module, scanner, request(2));
    std::future<ExchangeResult> results[] = {first.start(**bidi), second.start(**bidi)};
    bidi->peer->receive(2 * block(request(1)).size());
    bidi->peer->send(block("<Job.Start>"));
    scanner.waitFor(1);
    if (c.by == By::End) bidi->peer->close();
    if (c.by == By::Reset) bidi->peer->reset();
    if (c.by == By::WrongHeader) bidi->peer->send(hex("42 4B 07 00 00 00 00 00") + block(reply(1)));
    if (c.by == By::Close) (*bidi)->close();
    for (auto& result : results) EXPECT_EQ(result.get(), (ExchangeResult{c.code, c.code}));
    EXPECT_EQ(scanner.deliveries(), c.deliveries) << "told before the exchanges fail";
    EXPECT_TRUE(c.by != By::WrongHeader || bidi->peer->isEnded());
    if (c.by == By::Close) continue;
    // What is sent next goes to a new connection.
    Exchange next(*module, scanner, request(3));
    auto replied = next.start(**bidi);
    bidi->peer.emplace(listener.accept());
    answering(*bidi->peer, 3, block(reply(3))).get();
    EXPECT_EQ(replied.get(), kReplied);
  }
}

TEST_F(ObjectStore, IsNotToldOfALossBehindItsClose) {
  {
    OpenPart bidi(*module, attributes(), listener, device);
    device.onDelivery = [&](const std::string& delivery) {
      if (delivery == "code 64") bidi->close();
    };
    bidi.peer->send(block("<Job.Start>"));
    bidi.peer->close();
    device.waitFor(2);
  }
  module.reset();  // its threads have ended
  EXPECT_THAT(device.deliveries(), ElementsAre(noted("<Job.Start>"), "code 64"));
}

TEST_F(ObjectStore, SendsNothingButDocumentsThatCanBeAnswered) {
  const std::string tooLong = request(1) + std::string(131072, ' ');
  OpenPart bidi(*module, attributes(), listener, device);
  for (const std::string& document :
       {std::string(), std::string("<method name=\"event\"/>"), reply(1), std::string("1"), tooLong}) {
    EXPECT_EQ(ask(*bidi, document), (ExchangeResult{87, 87})) << document.substr(0, 80);
  }
  Data data(request(1));
  bidi->write(data);
  EXPECT_EQ(data.getRc(), 1u);
  EXPECT_EQ(visit(*module, *bidi, visitor_name::kObjectStoreData), 87u) << "without data and device";
  EXPECT_EQ(exchange(*module, *bidi, device, "1B 53 44 00 00 00 00 00", visitor_name::kEscCommand).result,
            1u);
  bidi->close();
  EXPECT_TRUE(bidi.peer->receive(1).empty());
  EXPECT_EQ(ask(*bidi, request(1)), (ExchangeResult{1229, 1229}));
  EXPECT_THAT(device.deliveries(), IsEmpty());
}

TEST_F(ObjectStore, GivesUpADeviceThatTakesNothing) {
  setSetting("NpaWriteTimeout", 50);
  setSetting("ReadTimeout", 0);
  OpenPart bidi(*module, attributes(), listener, device);
  const std::string longest = request(1) + std::string(131072 - request(1).size(), ' ');
  ExchangeResult result = kNoReply;
  for (int i = 0; i < 1000 && result == kNoReply; ++i) result = ask(*bidi, longest);
  EXPECT_EQ(result, (ExchangeResult{1460, 1460}));
  EXPECT_THAT(device.waitFor(2), ElementsAre("code 1460", "lost"))
      << "half a block leaves nothing to go on with";
}

}  // namespace
}  // namespace qvn::test
