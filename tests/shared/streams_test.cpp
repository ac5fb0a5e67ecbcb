// The streams and texts that devices send on any transport, with what a hostile one can send.
#include <gtest/gtest.h>

#include "shared/streams/block_stream.h"
#include "shared/streams/esc_stream.h"
#include "shared/streams/hid_stream.h"
#include "shared/streams/npa_stream.h"
#include "shared/streams/store_document.h"
#include "support/simulator/test_sockets.h"

namespace qvn::shared {
namespace {

using test::hex;
using test::toHex;

void receive(ReceiveBuffer& stream, PacketView bytes) {
  const auto room = stream.room();
  EXPECT_GE(room.size(), bytes.size());
  std::copy(bytes.begin(), bytes.end(), room.begin());
  stream.add(bytes.size());
}

// The stream finds the same in bytes that come in steps of any length. With `givesUp`, after all have come,
// what has begun is given up until nothing has.
template <typename Stream, typename Describe>
void expectFound(const std::string& bytes, const std::vector<std::string>& expected, const Describe& describe,
                 bool givesUp = false, bool isBroken = false) {
  const Packet all = hex(bytes);
  for (std::size_t step = 1; step <= all.size() + 1; ++step) {
    Stream stream;
    std::vector<std::string> found;
    const auto find = [&] {
      while (const auto item = stream.next()) found.push_back(describe(*item));
    };
    for (PacketView rest(all); !rest.empty(); rest = rest.subspan(std::min(step, rest.size()))) {
      receive(stream, rest.first(std::min(step, rest.size())));
      find();
    }
    if constexpr (requires { stream.giveUpPartial(); }) {
      for (; givesUp && stream.isPartial(); find()) stream.giveUpPartial();
    } else {
      EXPECT_EQ(stream.isBroken(), isBroken) << bytes << " by " << step;
    }
    EXPECT_EQ(found, expected) << bytes << " by " << step;
  }
}

using Found = std::vector<std::string>;

TEST(NpaStream, FindsPacketsHoweverTheyArrive) {
  const std::pair<const char*, Found> cases[] = {
      {"", {}},
      {"A5 00 02 20 01", {"A5 00 02 20 01"}},
      {"A5 00 02 20 01 A5 00 03 20 01 00", {"A5 00 02 20 01", "A5 00 03 20 01 00"}},
      {"00 FF 11 A5 00 02 20 01 77", {"A5 00 02 20 01"}},
      {"A5 00 00 A5 00 01 A5 00 02 20 01", {"A5 00 02 20 01"}},
      {"A5 00 09 20 01 00", {}},
  };
  const auto describe = [](PacketView packet) { return toHex(Packet(packet.begin(), packet.end())); };
  for (const auto& [bytes, packets] : cases) expectFound<NpaStream>(bytes, packets, describe);
  // What has begun is given up: a length takes in what follows, or never ends.
  const std::pair<const char*, Found> givenUp[] = {
      {"A5 00 09 20 01 00 A5 00 02 20 01", {"A5 00 02 20 01"}},
      {"A5 00 08 20 01 00 A5 00 02 20 01", {"A5 00 08 20 01 00 A5 00 02 20 01"}},
      {"A5 01 2C A5 A5 00 02 20 01 A5", {"A5 00 02 20 01"}},
      {"A5", {}},
  };
  for (const auto& [bytes, packets] : givenUp) expectFound<NpaStream>(bytes, packets, describe, true);
}

TEST(NpaPackets, ReplyMatchesItsRequestOnly) {
  const struct {
    const char* reply;
    const char* request;
    bool answers;
  } kCases[] = {
      {"A5 00 03 20 01 00", "A5 00 03 50 01 00", true},
      {"A5 00 02 20 01", "A5 00 03 50 01 00", true},
      {"A5 00 03 20 01 01", "A5 00 03 50 01 00", false},
      {"A5 00 03 20 02 00", "A5 00 03 50 01 00", false},
      {"A5 00 04 20 05 00 09", "A5 00 04 50 05 00 00", true},
      {"A5 00 04 20 E0 82 02", "A5 00 04 50 E0 82 02", true},
      {"A5 00 04 20 E0 82 03", "A5 00 04 50 E0 82 02", false},
      {"A5 00 03 A0 E0 82", "A5 00 04 50 E0 82 02", true},
      {"A5 00 01 20", "A5 00 03 50 01 00", false},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(answers(hex(c.reply), hex(c.request)), c.answers) << c.reply << " to " << c.request;
  }
}

TEST(EscStream, FindsCommandsHoweverTheyArrive) {
  const std::string status = "1B 53 53 00 00 00 00 00";
  const std::string block = "1B 73 64 03 00 01 00 00 1B 53 53";
  const std::string unknown = "1B 58 59 5A 02 00 00 00 41 42";
  const struct {
    std::string bytes;
    Found commands;
    Found afterGivingUp;
  } kCases[] = {
      {"", {}, {}},
      {status, {status}, {status}},
      {status + block + unknown + status, {status, block, unknown, status}, {status, block, unknown, status}},
      {"00 FF" + status, {status}, {status}},
      {status + "00" + block, {status, block}, {status, block}},
      {"00" + unknown + status, {status}, {status}},  // image data looks like a command too
      {"00 1B 58 1B" + status, {status}, {status}},
      {"1B 53 53", {}, {}},
      {"1B 73 64 FF FF 01 00 00" + unknown + status, {}, {status}},
      {"1B 73 64 0C 00 01 00 00" + status, {}, {status}},
      {"1B 73 64 0C 00 01 00 00 1B 73 64 0C 00 01 00 00", {}, {}},
  };
  const auto describe = [](esc::Bytes command) { return toHex({command.begin(), command.end()}); };
  for (const auto& c : kCases) {
    expectFound<EscStream>(c.bytes, c.commands, describe);
    expectFound<EscStream>(c.bytes, c.afterGivingUp, describe, true);
  }
}

TEST(HidStream, FindsFramesHoweverTheyArrive) {
  std::string content;  // of 258 bytes: 02 01
  for (int i = 0; i < 258; ++i) content += " 41";
  const std::pair<std::string, Found> cases[] = {
      {"", {}},
      {"01 02 00 41 42 02 00 00 07 01 00 43", {"1: 41 42", "2: ", "7: 43"}},
      {"01 00 00 01 03 00 41 42", {"1: "}},
      {"03 02 01" + content + " 04 00 00", {"3:" + content, "4: "}},
      {"01 FF FF 01 01 00 41", {}},
  };
  const auto describe = [](const HidFrame& frame) {
    return std::to_string(frame.type) + ": " + toHex({frame.content.begin(), frame.content.end()});
  };
  for (const auto& [bytes, frames] : cases) {
    for (const bool givesUp : {false, true}) expectFound<HidStream>(bytes, frames, describe, givesUp);
  }
}

TEST(HidStream, ReadsEvents) {
  const auto event = parseHidEvent(hex("04 03 02 81 02 00 00 00"));
  ASSERT_TRUE(event);
  EXPECT_EQ(event->id, 0x81020304u);
  EXPECT_EQ(event->category, 2u);
  for (const char* bad : {"", "04 03 02 01 02 00 00", "04 03 02 01 02 00 00 00 00"}) {
    EXPECT_FALSE(parseHidEvent(hex(bad))) << bad;
  }
}

std::string describeBlock(const Block& block) {
  return std::to_string(block.code) + ": " + toHex({block.bytes.begin(), block.bytes.end()});
}

TEST(BlockStream, FindsBlocksHoweverTheyArriveUntilAHeaderIsWrong) {
  const std::string two = "42 4B 01 00 00 00 00 02 41 42";
  const std::string failed = "42 4B 02 00 00 00 00 04 81 02 03 04";
  const struct {
    std::string bytes;
    Found blocks;
    bool isBroken = false;
  } kCases[] = {
      {"", {}},
      {two + failed + two, {"0: 41 42", "2164392708: ", "0: 41 42"}},
      {"42 4B 01 00 00 00 00 00" + two, {"0: ", "0: 41 42"}},
      {two + "42 4B 01 00 00 02 00 00 41", {"0: 41 42"}},
      {"42 4B 01 00 00 00 00", {}},
      {two + "00" + two, {"0: 41 42"}, true},
      {"4B 42 01 00 00 00 00 02" + two, {}, true},
      {"42 4B 03 00 00 00 00 02" + two, {}, true},
      {"42 4B 00 00 00 00 00 02" + two, {}, true},
      {"42 4B 01 01 00 00 00 02" + two, {}, true},
      {"42 4B 01 00 00 02 00 01" + two, {}, true},
      {"42 4B 01 00 FF FF FF FF" + two, {}, true},
      {"42 4B 02 00 00 00 00 03" + two, {}, true},
      {"42 4B 02 00 00 00 00 05" + two, {}, true},
  };
  for (const auto& c : kCases) {
    expectFound<BlockStream>(c.bytes, c.blocks, describeBlock, false, c.isBroken);
  }
}

TEST(StoreDocument, HasTheIdOfARequest) {
  const struct {
    const char* document;
    const char* id;
  } kCases[] = {
      {"<?xml version=\"1.0\"?>\r\n<method name=\"callMethod\" requestID=\"123000\">\r\n</method>", "123000"},
      {"<method requestID='1'/>", "1"},
      {"<?xml version=\"1.0\"?><!-- <method requestID=\"2\"> -->\n<method name=\">\" requestID=\"1\"/>", "1"},
      {"<method\tname = 'a \"requestID\"=2'\n requestID\r\n=\t\"1\" >", "1"},
      {"<method name=\"event\">\r\n<arg requestID=\"1\"/>", ""},
      {"<method requestid=\"1\" xrequestID=\"1\">", ""},
      {"<method requestID=\"\">", ""},
      {"<method requestID=1>", ""},
      {"<method requestID>", ""},
      {"<method a=\"b\" / requestID=\"1\">", ""},
      {"<methods requestID=\"1\">", ""},
      {"<!DOCTYPE method requestID=\"1\">", ""},
      {"text <method requestID=\"1\">", ""},
      {"<response requestID=\"1\"/>", ""},
      {"", ""},
  };
  for (const auto& c : kCases) EXPECT_EQ(requestIdOf(c.document), c.id) << c.document;
  // Cut anywhere it has no id, or the whole of it.
  const std::string_view whole = kCases[0].document;
  for (std::size_t length = 0; length < whole.size(); ++length) {
    const std::string cut(whole.substr(0, length));  // its end is known to a sanitizer
    EXPECT_EQ(requestIdOf(cut), length > whole.find("\">") ? "123000" : "") << cut;
  }
}

TEST(StoreDocument, HasTheIdThatAReplyAnswers) {
  const std::string response =
      "<?xml version=\"1.0\"?><response requestID=\"42\"><IntegerElem>7</IntegerElem>";
  const std::string exception = "<?xml version=\"1.0\"?><exception requestID=\"42\"/>";
  const struct {
    Packet frame;
    std::string document;
    const char* id;
  } kCases[] = {
      {{}, response, "42"},
      {{}, exception, "42"},
      {{}, "<?xml version=\"1.0\"?><method requestID=\"42\"/>", ""},
      {{}, "<Scan.Data>" + response, ""},
      {{}, "<responses requestID=\"42\"/>", ""},
      {hex("AA 00 00 00 00 00 00 FF"), response, "42"},  // at most what is there
      {hex("FF 01 02 03 FF FF FF FF"), exception, "42"},
      {hex("CC 00 00 00 00 00 00 2D"), response, "42"},  // up to behind the id
      {hex("CC 00 00 00 00 00 00 20"), response, ""},
      {hex("A9 00 00 00 00 00 00 FF"), response, ""},
      {hex("AA 00 00 00 00 00 00"), response, ""},
      {hex("AA"), "", ""},
  };
  for (const auto& c : kCases) {
    const Packet block = test::operator+(c.frame, test::bytesOf(c.document));
    EXPECT_EQ(answeredIdOf(block), c.id) << toHex(c.frame) << " " << c.document;
  }
}

}  // namespace
}  // namespace qvn::shared
