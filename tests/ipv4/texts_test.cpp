// The transport's parsers, with what a hostile network can send.
#include <gtest/gtest.h>

#include <random>

#include "ipv4/device_answer.h"
#include "ipv4/npa_stream.h"
#include "ipv4/search_text.h"
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

TEST(SearchText, ListsPlacesOrRefuses) {
  struct Case {
    const char* text;
    std::vector<std::string> places;
    bool valid = true;
  };
  const Case kCases[] = {
      {"", {}},
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
    std::vector<Endpoint> places;
    EXPECT_EQ(parseSearchText(c.text, places), c.valid ? 0u : 87u) << c.text;
    std::vector<std::string> texts;
    texts.reserve(places.size());
    for (const Endpoint& place : places) {
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

  const std::string bad[] = {
      "",
      heading,
      "QVN-DEVICE 1 u\n" + lines,
      "QVN-DEVICE 2 t\n" + lines,
      heading + lines.substr(0, lines.size() - 1),
      heading + "family=CpdPrinter\nmodel=M\nprint=1\nbidi=2\n",
      heading + lines + "print=0\n",
      heading + lines + "bidi=65536\n",
      heading + lines + "bidi=1x\n",
      heading + lines + "serial=\n",
      heading + lines + "model=</Printer Model><Handle>1</Handle>\n",
      heading + lines + "name=\x01\n",
      heading + lines + "serial=" + std::string(64, 'x') + "\n",
      heading + lines + "no equals sign\n",
      heading + lines + "pad=" + std::string(kMaxAnswer, 'x') + "\n",
  };
  for (const std::string& text : bad) EXPECT_FALSE(parseAnswer(text, "t")) << text;
}

}  // namespace
}  // namespace qvn::ipv4
