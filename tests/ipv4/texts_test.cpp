// The transport's parsers, with what a hostile network can send.
#include <gtest/gtest.h>

#include "ipv4/discovery/device_answer.h"
#include "ipv4/discovery/search_text.h"
#include "ipv4/discovery/services.h"
#include "ipv4/streams/block_stream.h"
#include "ipv4/streams/esc_stream.h"
#include "ipv4/streams/hid_stream.h"
#include "ipv4/streams/npa_stream.h"
#include "ipv4/streams/store_document.h"
#include "support/simulator/test_sockets.h"

namespace qvn::ipv4 {
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

TEST(SearchText, ListsPlacesOrRefuses) {
  const struct {
    const char* text;
    std::vector<std::string> places;
    bool valid = true;
    bool services = false;
  } kCases[] = {
      {"", {}},
      {"dns-sd", {}, true, true},
      {"10.0.0.1, dns-sd ,10.0.0.2", {"10.0.0.1:9200", "10.0.0.2:9200"}, true, true},
      {"dns-sd,10.0.0", {}, false},
      {"DNS-SD", {}, false},
      {"dns-sd:99", {}, false},
      {"10.0.0.1-dns-sd", {}, false},
      {" , ", {}},
      {"10.0.0.1", {"10.0.0.1:9200"}},
      {"10.0.0.1:99, 10.0.0.1:99", {"10.0.0.1:99"}},
      {"10.0.0.254-10.0.1.1:7", {"10.0.0.254:7", "10.0.0.255:7", "10.0.1.0:7", "10.0.1.1:7"}},
      {"255.255.255.255 - 255.255.255.255", {"255.255.255.255:9200"}},
      {"10.0.0.2-10.0.0.1", {}, false},
      {"10.0.0.0-10.0.4.0", {}, false},
      {"10.0.0.0-10.0.2.0,10.1.0.0-10.1.2.0", {}, false},
      {"10.0.0", {}, false},
      {"10.0.0.1:", {}, false},
      {"10.0.0.1:0", {}, false},
      {"10.0.0.1:65536", {}, false},
      {"printer", {}, false},
      {"10.0.0.1-", {}, false},
  };
  for (const auto& c : kCases) {
    SearchText search;
    EXPECT_EQ(parseSearchText(c.text, search), c.valid ? 0u : 87u) << c.text;
    EXPECT_EQ(search.services, c.services) << c.text;
    std::vector<std::string> texts;
    texts.reserve(search.places.size());
    for (const Endpoint& place : search.places) {
      texts.push_back(addressText(place.address) + ":" + std::to_string(place.port));
    }
    EXPECT_EQ(texts, c.places) << c.text;
  }
}

TEST(DeviceAnswer, TakesCompleteAnswersOnly) {
  const std::string heading = "QVN-DEVICE 1 t\n";
  const std::string lines = "family=CpdPrinter\nmodel=M\nserial=S\nname=N\nprint=1\nbidi=65535\n";
  const auto answer = parseAnswer(heading + lines + "colour=yes\n", "t");
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->family, "CpdPrinter");
  EXPECT_EQ(answer->bidiPort, 65535);
  EXPECT_EQ(answer->scanPort, 0);
  EXPECT_EQ(answer->hidPort, 0);

  const std::string plain = heading + "model=M\nserial=S\nprint=1\nfamily=";
  EXPECT_EQ(parseAnswer(plain + "BpdPrinter\n", "t").value().bidiPort, 0);
  EXPECT_EQ(parseAnswer(plain + "BpdPrinter\nbidi=0\n", "t").value().bidiPort, 0);
  EXPECT_EQ(parseAnswer(plain + "BpdPrinter\nbidi=7\n", "t").value().bidiPort, 7);

  const std::string bad[] = {
      "",
      plain + "CpdPrinter\n",
      plain + "CpdPrinter\nbidi=0\n",
      plain + "BpdPrinter\nbidi=-1\n",
      plain + "BpdPrinter\nprint=0\n",
      heading,
      "QVN-DEVICE 1 u\n" + lines,
      "QVN-DEVICE 2 t\n" + lines,
      heading + lines.substr(0, lines.size() - 1),
      heading + "family=CpdPrinter\nmodel=M\nprint=1\nbidi=2\n",
      heading + lines + "print=0\n",
      heading + lines + "bidi=65536\n",
      heading + lines + "bidi=1x\n",
      heading + lines + "scan=-1\n",
      heading + lines + "hid=65536\n",
      heading + lines + "serial=\n",
      heading + lines + "model=</Printer Model><Handle>1</Handle>\n",
      heading + lines + "name=\x01\n",
      heading + lines + "serial=" + std::string(64, 'x') + "\n",
      heading + lines + "no equals sign\n",
      heading + lines + "pad=" + std::string(kMaxAnswer, 'x') + "\n",
  };
  for (const std::string& text : bad) EXPECT_FALSE(parseAnswer(text, "t")) << text;
}

TEST(ServiceDescription, TakesWhatMayBeToldOfAnAnnouncedPrinter) {
  using Texts = std::map<std::string, std::string>;
  const std::string tag = "</Nickname><Handle>1</Handle>";
  const struct {
    std::string name;
    Texts texts;
    std::string serial;  // empty: nothing is told
    std::string model;
    std::string nickname;
  } kCases[] = {
      {"Hall",
       {{"usb_ser", "X1"}, {"uuid", "u"}, {"ty", "Laser 5"}, {"product", "(P)"}},
       "X1",
       "Laser 5",
       "Hall"},
      {"Hall", {{"uuid", "u-1"}, {"product", "(Laser 6)"}}, "u-1", "Laser 6", "Hall"},
      {"Hall", {{"product", "Laser 7"}}, "Hall", "Laser 7", "Hall"},
      {"Hall", {}, "Hall", "Hall", "Hall"},
      {"B\xC3\xBCro", {{"usb_ser", "X1"}, {"ty", "Laser 5"}}, "X1", "Laser 5", "Laser 5"},
      {"B\xC3\xBCro", {{"usb_ser", "X1"}}, "X1", "X1", "X1"},
      {"B\xC3\xBCro", {}, "", "", ""},
      {tag, {{"usb_ser", tag}, {"uuid", "\n"}, {"ty", tag}}, "", "", ""},
      {"Hall", {{"usb_ser", tag}, {"ty", std::string(64, 'x')}, {"product", "(>)"}}, "Hall", "Hall", "Hall"},
      {"Hall", {{"usb_ser", ""}, {"ty", std::string("a\0b", 3)}}, "Hall", "Hall", "Hall"},
      {std::string(64, 'x'), {{"usb_ser", "X1"}}, "X1", "X1", "X1"},
      {"", {}, "", "", ""},
  };
  for (const auto& c : kCases) {
    const auto device = describeService({c.name, {0x0A000001, 9100}, c.texts});
    ASSERT_EQ(device.has_value(), !c.serial.empty()) << c.name;
    if (!device) continue;
    EXPECT_EQ(device->serial, c.serial) << c.name;
    EXPECT_EQ(device->model, c.model) << c.name;
    EXPECT_EQ(device->name, c.nickname) << c.name;
    EXPECT_EQ(device->family, "BpdPrinter");
    EXPECT_EQ(device->printPort, 9100);
    EXPECT_EQ(device->bidiPort, 0);
  }
  EXPECT_FALSE(describeService({"Hall", {0, 9100}, {}})) << "nowhere";
  EXPECT_FALSE(describeService({"Hall", {0x0A000001, 0}, {}})) << "on no port";
}

}  // namespace
}  // namespace qvn::ipv4
