// The transport's parsers, with what a hostile network can send.
#include <gtest/gtest.h>

#include "ipv4/discovery/device_answer.h"
#include "ipv4/discovery/search_text.h"
#include "ipv4/discovery/services.h"

namespace qvn::ipv4 {
namespace {

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
