// The pages of the simulated scanner: their dots, their blocks, the feeder, and what ends them.
#include <gtest/gtest.h>
#include <png.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>

#include "support/content_of.h"
#include "support/pictures/picture.h"
#include "support/simulator/scan_host.h"

namespace qvn::test {
namespace {

// The lines of a page that shows a picture, dot by dot.
Bytes expectedPage(const Picture& picture, std::uint64_t dpi, ScanFormat format, const ScanArea& area) {
  const std::uint64_t dots = area.width * dpi / 1200;
  const std::uint64_t lines = area.height * dpi / 1200;
  Bytes page;
  for (std::uint64_t y = 0; y < lines; ++y) {
    const std::uint64_t row = (area.top + y * 1200 / dpi) * picture.height / 14040;
    std::uint8_t bits = 0;
    for (std::uint64_t x = 0; x < dots; ++x) {
      const std::uint64_t column = (area.left + x * 1200 / dpi) * picture.width / 10200;
      const std::uint8_t* rgb = picture.rgb.data() + 3 * (row * picture.width + column);
      const auto gray = static_cast<std::uint8_t>((299 * rgb[0] + 587 * rgb[1] + 114 * rgb[2] + 500) / 1000);
      if (format == ScanFormat::Color) page.insert(page.end(), rgb, rgb + 3);
      if (format == ScanFormat::Gray) page.push_back(gray);
      if (format != ScanFormat::BlackAndWhite) continue;
      bits = static_cast<std::uint8_t>(bits << 1 | (gray < 128 ? 1 : 0));
      if (x % 8 == 7 || x + 1 == dots) {
        page.push_back(static_cast<std::uint8_t>(bits << (7 - x % 8)));
        bits = 0;
      }
    }
  }
  return page;
}

class SimulatedPages : public testing::Test {
 protected:
  SimulatedPages() : home(std::getenv("QVN_HOME")), scans(home / "scans") {}
  void TearDown() override { std::filesystem::remove_all(scans); }

  const std::filesystem::path home;
  const std::filesystem::path scans;
};

TEST_F(SimulatedPages, ShowThePictureWhereItLies) {
  const Picture picture = noise(101, 77);
  writePng(home / "page.png", picture);
  const SimulatorProcess device({"--page", (home / "page.png").string()});
  ScanHost host(device);
  const struct {
    std::uint16_t dpi;
    ScanFormat format;
    ScanArea area;
  } kCases[] = {
      {75, ScanFormat::Gray, {}},
      {75, ScanFormat::Color, {}},
      {75, ScanFormat::BlackAndWhite, {}},
      {100, ScanFormat::Color, {1, 1, 10199, 14039}},
      {150, ScanFormat::BlackAndWhite, {777, 333, 1001, 999}},
      {200, ScanFormat::Gray, {5000, 7000, 5200, 7040}},
      {300, ScanFormat::Color, {1234, 4321, 2222, 1111}},
      {600, ScanFormat::Gray, {0, 14000, 10200, 40}},
      {1200, ScanFormat::Color, {10100, 0, 100, 1000}},
      {1200, ScanFormat::BlackAndWhite, {10199, 14039, 1, 1}},
  };
  for (const auto& c : kCases) {
    host.set(c.dpi, c.format, c.area);
    const ScannedPage page = host.scan();
    EXPECT_EQ(page.status, kScanGood);
    EXPECT_TRUE(page.data == expectedPage(picture, c.dpi, c.format, c.area))
        << c.dpi << " dpi, format " << int(c.format) << ", area " << c.area.left << ',' << c.area.top << ' '
        << c.area.width << 'x' << c.area.height << ": " << page.data.size() << " bytes";
  }
}

TEST_F(SimulatedPages, ShowTransparencyAsWhite) {
  // Two columns: one transparent, one black.
  const std::uint8_t kPixels[] = {0, 0, 0, 0, 0, 0, 0, 255};
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = 2;
  image.height = 1;
  image.format = PNG_FORMAT_RGBA;
  ASSERT_NE(png_image_write_to_file(&image, (home / "clear.png").c_str(), 0, kPixels, 0, nullptr), 0);
  const SimulatorProcess device({"--page", (home / "clear.png").string()});
  ScanHost host(device);
  host.set(75, ScanFormat::BlackAndWhite, {5036, 0, 160, 16});  // ten dots of one line around the middle
  EXPECT_EQ(toHex(host.scan().data), "0F C0");
}

TEST_F(SimulatedPages, ShowATestChartWithDetailInEachLine) {
  const SimulatorProcess device;
  ScanHost host(device);
  for (const std::uint16_t dpi : std::initializer_list<std::uint16_t>{75, 100, 150, 200, 300, 600, 1200}) {
    host.set(dpi, ScanFormat::Gray, {0, 0, 480, 14040});
    const ScannedPage page = host.scan();
    const std::size_t lineLength = 480u * dpi / 1200;
    const std::size_t lines = 14040u * dpi / 1200;
    ASSERT_EQ(page.data.size(), lineLength * lines) << dpi;
    std::set<std::string> different;
    for (std::size_t at = 0; at < page.data.size(); at += lineLength) {
      different.emplace(page.data.begin() + static_cast<std::ptrdiff_t>(at),
                        page.data.begin() + static_cast<std::ptrdiff_t>(at + lineLength));
    }
    EXPECT_EQ(different.size(), lines) << dpi << " dpi: no line twice";
    EXPECT_TRUE(host.scan().data == page.data) << dpi << " dpi: always the same";
  }
  host.set(75, ScanFormat::Color);
  const Bytes data = host.scan().data;
  std::set<std::uint32_t> colors;
  for (std::size_t at = 0; at < data.size(); at += 3) {
    colors.insert(static_cast<std::uint32_t>(data[at] << 16 | data[at + 1] << 8 | data[at + 2]));
  }
  EXPECT_GT(colors.size(), 500u) << "ramps and patches";
}

TEST_F(SimulatedPages, ComeInBlocks) {
  for (const std::size_t longest : {1u, 1000u, 32768u, 65535u}) {
    SCOPED_TRACE(longest);
    const SimulatorProcess device({"--block", std::to_string(longest)});
    ScanHost host(device);
    host.set(75, ScanFormat::Gray, {0, 0, 4800, 3840});
    for (std::uint8_t number = 1; number <= 2; ++number) {
      const ScannedPage page = host.scan();
      ASSERT_EQ(page.data.size(), 72000u);
      ASSERT_EQ(page.blocks.size(), (72000 + longest - 1) / longest);
      std::size_t left = 72000;
      for (std::size_t i = 0; i < page.blocks.size(); ++i) {
        ASSERT_EQ(page.blocks[i].length, std::min(longest, left)) << "block " << i;
        ASSERT_EQ(page.blocks[i].page, number) << "block " << i;
        ASSERT_EQ(page.blocks[i].number, i % 65536) << "block " << i;
        left -= page.blocks[i].length;
      }
    }
  }
}

TEST_F(SimulatedPages, TakeASheetOfTheFeeder) {
  SimulatorProcess device({"--feeder", "2"});
  ScanHost host(device);
  host.set(75, ScanFormat::Gray, {0, 0, 160, 160});
  EXPECT_EQ(host.scan().status, "1B 53 53 00 02 00 00 00") << "the flatbed takes none";
  host.setSource("feeder");
  EXPECT_EQ(host.scan().status, "1B 53 53 00 01 00 00 00");
  EXPECT_EQ(host.scan().status, kScanGood);
  EXPECT_EQ(host.ask(kScanGo), "1B 53 53 05 00 00 00 00") << "empty";
  device.command("load 1");
  EXPECT_EQ(host.scan().status, kScanGood);
  host.setSource("flatbed");
  EXPECT_EQ(host.scan().status, kScanGood);
}

TEST_F(SimulatedPages, CannotHaveAnAreaBeyondTheGlass) {
  const SimulatorProcess device;
  ScanHost host(device);
  const ScanArea kAreas[] = {
      {1, 0, 10200, 14040}, {0, 1, 10200, 14040}, {0, 0, 15, 14040}, {0, 0, 10200, 15}};
  for (const ScanArea& area : kAreas) {
    host.set(75, ScanFormat::Gray, area);
    EXPECT_EQ(host.ask(kScanGo), "1B 53 53 02 00 00 00 00")
        << area.left << ' ' << area.top << ' ' << area.width;
  }
}

TEST_F(SimulatedPages, AreKeptAsPictures) {
  const struct {
    ScanFormat format;
    std::uint16_t dpi;
    std::vector<std::uint8_t> depthAndType;  // of the PNG
    std::string dotsPerMetre;                // each way, as it stands there
  } kCases[] = {
      {ScanFormat::BlackAndWhite, 100, {1, 0}, {"\0\0\x0F\x61\0\0\x0F\x61", 8}},
      {ScanFormat::Gray, 300, {8, 0}, {"\0\0\x2E\x23\0\0\x2E\x23", 8}},
      {ScanFormat::Color, 200, {8, 2}, {"\0\0\x1E\xC2\0\0\x1E\xC2", 8}},
  };
  writePng(home / "page.png", noise(64, 64));
  const std::vector<std::string> arguments = {"--page", (home / "page.png").string(), "--scans",
                                              scans.string()};
  {
    const SimulatorProcess device(arguments);
    ScanHost host(device);
    int number = 0;
    for (const auto& c : kCases) {
      host.set(c.dpi, c.format);
      const Bytes data = host.scan().data;
      const std::filesystem::path file = scans / ("page-" + std::to_string(++number) + ".png");
      SCOPED_TRACE(file.string());
      const Picture kept = readPng(file);
      ASSERT_EQ(kept.width, 10200u * c.dpi / 1200);
      ASSERT_EQ(kept.height, 14040u * c.dpi / 1200);
      EXPECT_TRUE(expectedPage(kept, c.dpi, c.format, {}) == data) << "what was kept is what was sent";
      const std::string raw = contentOf(file);
      EXPECT_EQ(std::vector<std::uint8_t>(raw.begin() + 24, raw.begin() + 26), c.depthAndType);
      EXPECT_NE(raw.find("pHYs" + c.dotsPerMetre), std::string::npos);
    }
  }
  const SimulatorProcess later(arguments);
  ScanHost host(later);
  host.set(75, ScanFormat::Gray, {0, 0, 1200, 1200});
  host.scan();
  EXPECT_EQ(readPng(scans / "page-4.png").width, 75u) << "numbers go on";
}

TEST_F(SimulatedPages, AreSentAlthoughTheDiskDoesNotTakeThem) {
  const SimulatorProcess device({"--scans", scans.string()});
  std::filesystem::remove_all(scans);
  ScanHost host(device);
  host.set(75, ScanFormat::Gray);
  EXPECT_EQ(host.scan().status, kScanGood);
}

TEST_F(SimulatedPages, RefuseAPictureThatIsNone) {
  std::ofstream(home / "text.png") << "no picture";
  EXPECT_EQ(runSimulator({"--page", (home / "text.png").string()}), 1);
  EXPECT_NE(runSimulator({"--page", (home / "missing.png").string()}), 0);
  for (const char* bad : {"0", "65536", "-1"}) EXPECT_NE(runSimulator({"--block", bad}), 0) << bad;
}

TEST_F(SimulatedPages, EndAtOnceWhenAborted) {
  const SimulatorProcess device({"--scans", scans.string()});
  ScanHost host(device);
  host.send(kScanAbort);  // there is nothing to abort
  host.set(1200, ScanFormat::Color);
  host.send(kScanGo);
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(isScanData(host.receive()));
  host.send(kScanAbort);
  const ScannedPage rest = host.receivePage();
  EXPECT_EQ(rest.status, kScanAborted);
  EXPECT_LT(rest.data.size(), std::size_t{100} << 20) << "of 430 MB";
  EXPECT_TRUE(std::filesystem::is_empty(scans));
  host.set(75, ScanFormat::Gray);
  const ScannedPage next = host.scan();
  EXPECT_EQ(next.status, kScanGood);
  EXPECT_EQ(next.blocks.front().page, 2);
  EXPECT_EQ(next.data.size(), 637u * 877u);
}

TEST_F(SimulatedPages, AreForOneHostAtATime) {
  const SimulatorProcess device;
  ScanHost first(device);
  first.set(1200, ScanFormat::Color);
  first.send(kScanGo);
  EXPECT_TRUE(isScanData(first.receive()));
  // The first host reads no more: its page waits, and everybody else is served.
  ScanHost second(device);
  second.set(75, ScanFormat::Gray);
  EXPECT_EQ(second.ask(kScanGo), kScanBusy);
  EXPECT_EQ(second.ask("1B 44 53 4C 00 00 00 00"), kScanBusy) << "no lock either";
  EXPECT_EQ(second.ask("1B 53 4B 00 00 00 00 00"), "1B 53 4B 00 01 00 00 00");
  second.send(kScanAbort);  // not its page
  EXPECT_EQ(second.ask(kScanGo), kScanBusy);
}

}  // namespace
}  // namespace qvn::test
