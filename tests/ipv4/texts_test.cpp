// The transport's parsers, with what a hostile network can send.
#include <gtest/gtest.h>

#include <random>

#include "ipv4/device_answer.h"
#include "ipv4/esc_stream.h"
#include "ipv4/hid_stream.h"
#include "ipv4/npa_stream.h"
#include "ipv4/search_text.h"
#include "ipv4/services.h"
#include "simulator/test_sockets.h"

namespace qvn::ipv4 {
namespace {

using test::hex;
using test::toHex;

const Packet kReply = hex("A5 00 05 20 E0 82 02 02");

TEST(NpaStream, FindsPacketsHoweverTheyArrive) {
  struct Case {
    const char* bytes;
    std::vector<const char*> packets;
  };
  const Case kCases[] = {
      {"", {}},
      {"A5 00 02 20 01", {"A5 00 02 20 01"}},
      {"A5 00 02 20 01 A5 00 03 20 01 00", {"A5 00 02 20 01", "A5 00 03 20 01 00"}},
      {"00 FF 11 A5 00 02 20 01 77", {"A5 00 02 20 01"}},
      {"A5 00 00 A5 00 01 A5 00 02 20 01", {"A5 00 02 20 01"}},
      {"A5 00 09 20 01 00", {}},
  };
  for (const Case& c : kCases) {
    const Packet bytes = hex(c.bytes);
    for (const std::size_t step : {bytes.size(), std::size_t{1}, std::size_t{4}}) {
      NpaStream stream;
      std::vector<std::string> packets;
      for (std::size_t at = 0; at < bytes.size(); at += step) {
        stream.add(PacketView(bytes).subspan(at, std::min(step, bytes.size() - at)));
        while (const auto packet = stream.next()) packets.push_back(toHex(*packet));
      }
      EXPECT_EQ(packets, std::vector<std::string>(c.packets.begin(), c.packets.end()))
          << c.bytes << " in steps of " << step;
    }
  }
}

TEST(NpaStream, GetsBehindGarbageOfEveryLength) {
  enum Kind { kNoise, kTakesThreeMore, kNeverEnds, kRightLength };
  std::mt19937 random(61);
  for (std::size_t length = 0; length <= 300; ++length) {
    for (const Kind kind : {kNoise, kTakesThreeMore, kNeverEnds, kRightLength}) {
      Packet garbage(length);
      for (std::uint8_t& byte : garbage) byte = static_cast<std::uint8_t>(random() & 0x7F);
      const bool hasHeader = length >= 3 && kind != kNoise;
      if (hasHeader) {
        const std::size_t extra = kind == kTakesThreeMore ? 3 : kind == kNeverEnds ? 300 : 0;
        garbage[0] = 0xA5;
        garbage[1] = static_cast<std::uint8_t>((length - 3 + extra) >> 8);
        garbage[2] = static_cast<std::uint8_t>((length - 3 + extra) & 0xFF);
      }
      NpaStream stream;
      stream.add(garbage);
      stream.add(kReply);
      bool found = false;
      for (bool more = true; more;) {
        while (const auto packet = stream.next()) {
          EXPECT_TRUE(isWellFormed(*packet));
          found = found || *packet == kReply;
        }
        more = stream.isPartial();  // as when nothing else comes: what has begun is given up
        stream.giveUpPartial();
      }
      const bool replyTaken = hasHeader && kind == kTakesThreeMore;
      EXPECT_EQ(found, !replyTaken) << "length " << length << " kind " << kind;
    }
  }
}

TEST(NpaPackets, ReplyMatchesItsRequestOnly) {
  struct Case {
    const char* reply;
    const char* request;
    bool answers;
  };
  constexpr Case kCases[] = {
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
  for (const Case& c : kCases) {
    EXPECT_EQ(answers(hex(c.reply), hex(c.request)), c.answers) << c.reply << " to " << c.request;
  }
}

// What a stream gives when bytes come in steps of that length; with `givesUp`, after all have come, what has
// begun is given up until nothing has.
template <typename Stream, typename Describe>
std::vector<std::string> read(const Packet& bytes, std::size_t step, bool givesUp, const Describe& describe) {
  Stream stream;
  std::vector<std::string> items;
  const auto take = [&] {
    while (const auto item = stream.next()) items.push_back(describe(*item));
  };
  for (std::size_t at = 0; at < bytes.size(); at += step) {
    const std::size_t length = std::min(step, bytes.size() - at);
    const auto room = stream.room();
    EXPECT_GE(room.size(), length);
    std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), length, room.begin());
    stream.add(length);
    take();
  }
  while (givesUp && stream.isPartial()) {
    stream.giveUpPartial();
    take();
  }
  return items;
}

TEST(EscStream, FindsCommandsHoweverTheyArrive) {
  const std::string status = "1B 53 53 00 00 00 00 00";
  const std::string block = "1B 73 64 03 00 01 00 00 1B 53 53";
  const std::string unknown = "1B 58 59 5A 02 00 00 00 41 42";
  struct Case {
    std::string bytes;
    std::vector<std::string> commands;
    std::vector<std::string> afterGivingUp;
  };
  const Case kCases[] = {
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
  const auto spaced = [](const std::vector<std::string>& commands) {
    std::vector<std::string> all;
    for (const std::string& command : commands) all.push_back(toHex(hex(command)));
    return all;
  };
  for (const Case& c : kCases) {
    const Packet bytes = hex(c.bytes);
    for (std::size_t step = 1; step <= bytes.size() + 1; ++step) {
      EXPECT_EQ(read<EscStream>(bytes, step, false, describe), spaced(c.commands))
          << c.bytes << " by " << step;
      EXPECT_EQ(read<EscStream>(bytes, step, true, describe), spaced(c.afterGivingUp))
          << c.bytes << " by " << step;
    }
  }
}

TEST(EscStream, NeverRunsOutOfRoom) {
  // The longest commands there are, in the pieces that leave the most of one behind.
  Packet bytes;
  for (int i = 0; i < 20; ++i) {
    bytes = test::operator+(std::move(bytes), hex("1B 73 64 FF FF 01 00 00"));
    bytes.resize(bytes.size() + 65535, 0x1B);
  }
  for (const std::size_t step : {std::size_t{65535}, std::size_t{65542}, std::size_t{100000}}) {
    const auto length = [](esc::Bytes command) { return std::to_string(command.size()); };
    EXPECT_EQ(read<EscStream>(bytes, step, false, length), std::vector<std::string>(20, "65543"));
  }
}

TEST(HidStream, FindsFramesHoweverTheyArrive) {
  struct Case {
    const char* bytes;
    std::vector<std::string> frames;
  };
  const Case kCases[] = {
      {"", {}},
      {"01 02 00 41 42 02 00 00 07 01 00 43", {"1: 41 42", "2: ", "7: 43"}},
      {"01 00 00 01 03 00 41 42", {"1: "}},
      {"01 FF FF 01 01 00 41", {}},
  };
  const auto describe = [](const HidFrame& frame) {
    return std::to_string(frame.type) + ": " + toHex({frame.content.begin(), frame.content.end()});
  };
  for (const Case& c : kCases) {
    const Packet bytes = hex(c.bytes);
    for (std::size_t step = 1; step <= bytes.size() + 1; ++step) {
      for (const bool givesUp : {false, true}) {
        EXPECT_EQ(read<HidStream>(bytes, step, givesUp, describe), c.frames) << c.bytes << " by " << step;
      }
    }
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

TEST(SearchText, ListsPlacesOrRefuses) {
  struct Case {
    const char* text;
    std::vector<std::string> places;
    bool valid = true;
    bool services = false;
  };
  const Case kCases[] = {
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
  for (const Case& c : kCases) {
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
  struct Case {
    std::string name;
    Texts texts;
    std::string serial;  // empty: nothing is told
    std::string model;
    std::string nickname;
  };
  const Case kCases[] = {
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
  for (const Case& c : kCases) {
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
