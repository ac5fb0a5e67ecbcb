// qvn scan, qvn esc and qvn hid watch with a device that scans, has buttons and misbehaves.
#include <signal.h>
#include <tiffio.h>

#include <fstream>

#include "end_to_end/scan/scan_station.h"
#include "support/content_of.h"

namespace qvn::test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class CpdScanning : public ScanStation {};

class Scanning : public ScanStation, public testing::WithParamInterface<const char*> {
 protected:
  Scanning() : ScanStation(GetParam()) {}

  // What the device still has of a fault is over, and the next page comes whole.
  void expectNextPage(const std::string& name = "next.png") {
    device().command("clear-faults");
    ok({"scan", "--dpi", "100", "--mode", "color", "-o", out(name)});
    EXPECT_SAME_PICTURE(readPng(out(name)), glass());
    std::filesystem::remove(out(name));
  }
};

INSTANTIATE_TEST_SUITE_P(Families, Scanning, testing::Values(kCpd, kBpd), familyName);

TEST_P(Scanning, ThePictureIsWhatLiesOnTheGlass) {
  start();
  const std::string file = out("page.png");
  EXPECT_EQ(ok({"scan", "--dpi", "100", "--mode", "color", "-o", file}),
            "scanned page 1 to " + file + ": 850 x 1170 dots, color, 100 dpi\n");
  EXPECT_SAME_PICTURE(readPng(file), glass());
  // 100 dots an inch are 3937 a metre, in both directions.
  EXPECT_THAT(contentOf(file), HasSubstr(std::string("pHYs\x00\x00\x0F\x61\x00\x00\x0F\x61\x01", 13)));

  // The same on standard output.
  const Result piped = qvn({"scan", "--dpi", "100", "--mode", "color", "-o", "-"});
  EXPECT_EQ(piped.exitCode, 0) << piped.errors;
  EXPECT_EQ(piped.output == contentOf(file), true);
}

TEST_P(Scanning, EveryFormatHoldsWhatTheDeviceSent) {
  start();
  const struct {
    std::string name, dpi, mode, area;
    std::uint32_t width, height;
  } cases[] = {
      {"a.png", "75", "bw", "0x0x215.9x297.18", 637, 877},
      {"b.png", "150", "bw", "10x20x100x50", 590, 295},
      {"c.PNG", "200", "gray", "0.5x0.25x30.7x40.1", 241, 315},
      {"d.tif", "600", "color", "190x280x25x17", 590, 401},
      {"e.TIFF", "1200", "gray", "3x3x1.1x20", 52, 945},
      {"f.tif", "300", "bw", "1.3x2x9.6x11", 113, 130},
      {"g.png", "1200", "color", "0x0x0.03x0.03", 1, 1},
  };
  int page = 0;
  for (const auto& [name, dpi, mode, area, width, height] : cases) {
    SCOPED_TRACE(name);
    const json line =
        json::parse(ok({"scan", "--dpi", dpi, "--mode", mode, "--area", area, "-o", out(name), "--json"}));
    EXPECT_EQ(line["file"], out(name));
    EXPECT_EQ(line["width"], width);
    EXPECT_EQ(line["height"], height);
    EXPECT_EQ(line["mode"], mode);
    EXPECT_EQ(std::to_string(line["dpi"].get<int>()), dpi);
    const bool tiff = name.find(".p") == std::string::npos && name.find(".P") == std::string::npos;
    EXPECT_SAME_PICTURE(tiff ? readTiff(out(name)).at(0) : readPng(out(name)), sent(++page));
  }
}

TEST_P(Scanning, TheFeederFillsOneTiffOrOneFileAPage) {
  start({"--feeder", "3"});
  const std::string file = out("letter.tif");
  ok({"scan", "--source", "feeder", "--pages", "all", "--dpi", "75", "--mode", "gray", "-o", file});
  const std::vector<Picture> pages = readTiff(file);
  ASSERT_EQ(pages.size(), 3u);
  for (int page = 0; page < 3; ++page)
    EXPECT_SAME_PICTURE(pages[static_cast<std::size_t>(page)], sent(page + 1));
  const std::unique_ptr<TIFF, decltype(&TIFFClose)> tiff(TIFFOpen(file.c_str(), "r"), TIFFClose);
  float resolution = 0;
  TIFFGetField(tiff.get(), TIFFTAG_XRESOLUTION, &resolution);
  EXPECT_EQ(resolution, 75);

  device().command("load 3");
  ok({"scan", "--source", "feeder", "--pages", "2", "--dpi", "75", "-o", out("p.png")});
  EXPECT_THAT(filesLeft(), ElementsAre("letter.tif", "p-1.png", "p-2.png"));
  EXPECT_SAME_PICTURE(readPng(out("p-2.png")), sent(5));
}

TEST_P(Scanning, AFeederThatRunsEmptyKeepsThePagesSoFar) {
  start({"--feeder", "1"});
  const Result fewer = qvn({"scan", "--source", "feeder", "--pages", "3", "--dpi", "75", "-o", out("p.tif")});
  EXPECT_EQ(fewer.exitCode, 1);
  EXPECT_THAT(fewer.errors, HasSubstr("the feeder was empty after 1 of 3 pages"));
  EXPECT_EQ(readTiff(out("p.tif")).size(), 1u);

  for (const char* pages : {"1", "all"}) {
    const Result none = qvn({"scan", "--source", "feeder", "--pages", pages, "-o", out("none.png")});
    EXPECT_EQ(none.exitCode, 1);
    EXPECT_THAT(none.errors, HasSubstr("there is no sheet in the feeder"));
  }
  EXPECT_THAT(filesLeft(), ElementsAre("p.tif"));
}

TEST_P(Scanning, CtrlCAbortsThePageAndLeavesTheScannerReady) {
  for (const char* name : {"page.png", "page.tif"}) {
    SCOPED_TRACE(name);
    start({"--fault", "slow-scan=50000"});
    Child scan({QVN_COMMAND, "scan", "--dpi", "100", "-o", out(name)});
    waitUntilPageIsSent();
    scan.signal(SIGINT);
    EXPECT_EQ(scan.wait(), 130);
    EXPECT_THAT(scan.errors(), HasSubstr("the scan was cancelled"));
    EXPECT_THAT(filesLeft(), IsEmpty());
    expectNextPage();
  }
}

TEST_P(Scanning, AScanThatIsKilledLeavesTheScannerToTheNext) {
  start({"--fault", "slow-scan=50000"});
  Child killed({QVN_COMMAND, "scan", "--dpi", "100", "-o", out("page.png")});
  waitUntilPageIsSent();
  killed.signal(SIGKILL);
  EXPECT_EQ(killed.wait(), 128 + SIGKILL);
  EXPECT_FALSE(std::filesystem::exists(out("page.png"))) << "half a page has another name";
  expectNextPage("page.png");
}

TEST_P(Scanning, FailsClearlyWithADeviceThatMisbehavesAndRecovers) {
  start();
  // One that has sent its whole page does not answer the abort either.
  ok({"settings", "set", "ScanCancelWaitDuration", "200"});
  using Cases = std::vector<std::pair<std::string, std::string>>;
  Cases cases = {{"close-mid-page=500000:1", "the connection to the scanner was lost"},
                 {"stop-page=300000:1", "no block came from the scanner for 1 s"}};
  const Cases cpdCases = {
      {"busy", "the scanner is busy with another host"},
      {"status-early=300000:1", "the scanner ended the page after "},
      {"status-never:1", "no block came from the scanner for 1 s"},
  };
  const Cases bpdCases = {
      {"busy", "the scanner did not start the scan: another host may have it"},
      {"reject=create:1", "the scanner did not start the scan"},
      {"close-bidi=start:1", "the connection to the scanner was lost"},
      {"no-data:1", "the scanner ended the page after 0 of "},
      {"host-mode-fail:1", "the scanner did not start the scan"},
      {"drop-reply=create:1", "no block came from the scanner for 1 s"},
  };
  const Cases& own = family() == kBpd ? bpdCases : cpdCases;
  cases.insert(cases.end(), own.begin(), own.end());
  for (const auto& [fault, sentence] : cases) {
    SCOPED_TRACE(fault);
    device().command("fault " + fault);
    const Result failed = qvn({"scan", "--dpi", "100", "--timeout", "1", "-o", out("page.png")});
    EXPECT_EQ(failed.exitCode, 1);
    EXPECT_THAT(failed.errors, HasSubstr(sentence));
    EXPECT_THAT(filesLeft(), IsEmpty());
    expectNextPage();
  }
}

TEST_P(Scanning, OutputThatCannotBeWrittenFailsBeforeTheScannerStarts) {
  start();
  const struct {
    std::vector<std::string> arguments;
    std::string sentence;
  } cases[] = {
      {{"scan", "-o", out("no/such/page.png")},
       "cannot write '" + out("no/such/page.png") + "': No such file"},
      {{"scan", "-o", home().string() + "/out/../out.png"}, "Is a directory"},
      {{"scan", "--dpi", "123", "-o", out("page.png")}, "the scanner has no 123 dpi"},
      {{"scan", "--area", "100x0x200x10", "-o", out("page.png")}, "the area reaches beyond"},
  };
  std::filesystem::create_directory(home() / "out.png");
  for (const auto& [arguments, sentence] : cases) {
    const Result refused = qvn(arguments);
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.errors, HasSubstr(sentence));
  }
  std::filesystem::remove(home() / "out.png");
  EXPECT_THAT(filesLeft(), IsEmpty());
  EXPECT_THROW(sent(1), std::runtime_error);
}

TEST_P(Scanning, AFullDiskLeavesNoFileAndTheScannerReady) {
  start();
  const std::string scan = std::string(QVN_COMMAND) + " scan --dpi 100 --mode color -o ";
  const struct {
    std::string command;
    std::string sentence;
  } cases[] = {
      {"ulimit -f 64; exec " + scan + out("page.png"),
       "cannot write '" + out("page.png") + "': File too large"},
      {"ulimit -f 64; exec " + scan + out("page.tif"),
       "cannot write '" + out("page.tif") + "': File too large"},
      {"exec " + scan + "- >/dev/full", "cannot write 'standard output': No space left on device"},
      {scan + "- | true; exit 1", "cannot write 'standard output': Broken pipe"},
  };
  for (const auto& [command, sentence] : cases) {
    SCOPED_TRACE(command);
    const Result full = run({"/bin/sh", "-c", command});
    EXPECT_EQ(full.exitCode, 1);
    EXPECT_THAT(full.errors, HasSubstr(sentence));
    EXPECT_THAT(filesLeft(), IsEmpty());
  }
  expectNextPage();
}

TEST_P(Scanning, AnExistingFileIsReplacedOnlyByAWholeOne) {
  start();
  std::ofstream(out("page.png")) << "what was there";
  std::filesystem::create_symlink(out("page.png"), out("link.png"));
  device().command("fault close-mid-page=500000:1");
  EXPECT_EQ(qvn({"scan", "--dpi", "100", "-o", out("link.png")}).exitCode, 1);
  EXPECT_EQ(contentOf(out("page.png")), "what was there");
  ok({"scan", "--dpi", "100", "--mode", "color", "-o", out("link.png")});
  EXPECT_TRUE(std::filesystem::is_symlink(out("link.png")));
  EXPECT_SAME_PICTURE(readPng(out("page.png")), glass());
}

TEST_F(CpdScanning, EscShowsTheReplyOfOneCommand) {
  start({"--feeder", "5"});
  EXPECT_EQ(ok({"esc", "1B53460000000000"}), "1B 53 53 00 05 00 00 00\n");
  EXPECT_EQ(json::parse(ok({"esc", "1B", "53 43", "09 00000000", "--json"})),
            json({{"request", "1B53430900000000"}, {"reply", "1B53530200000000"}}));
  EXPECT_THAT(ok({"esc", "1B 53 56 00 00 00 00 00"}), testing::StartsWith("1B 73 76 "));
}

TEST_P(Scanning, HidWatchShowsReportsAndEvents) {
  start();
  Child watch({QVN_COMMAND, "hid", "watch", "--json"});
  ASSERT_EQ(watch.readErrorLine().value_or("nothing"), "watching 1 hid");
  device().command("button 3");
  device().command("event 7");
  device().command("report 0A0B");
  const json press = json::parse(watch.readLine().value_or("{}"));
  EXPECT_EQ(press["event"], "report");
  EXPECT_EQ(press["button"], 3);
  EXPECT_EQ(press["report"], "01 01 03 00 00 00 00 00");
  const json event = json::parse(watch.readLine().value_or("{}"));
  EXPECT_EQ(event["event"], "event");
  EXPECT_EQ(event["id"], 7);
  const json report = json::parse(watch.readLine().value_or("{}"));
  EXPECT_EQ(report["report"], "0A 0B");
  EXPECT_FALSE(report.contains("button"));
  watch.signal(SIGINT);
  EXPECT_EQ(watch.wait(), 130);

  Child counting({QVN_COMMAND, "hid", "watch", "--count", "1"});
  ASSERT_EQ(counting.readErrorLine().value_or("nothing"), "watching 1 hid");
  device().command("button 12");
  EXPECT_THAT(counting.readLine().value_or(""),
              testing::EndsWith("report  01 01 0C 00 00 00 00 00  button 12"));
  EXPECT_EQ(counting.wait(), 0);
}

}  // namespace
}  // namespace qvn::test
