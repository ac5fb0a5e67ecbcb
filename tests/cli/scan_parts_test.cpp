// The parts of scanning that need no device: what is asked, what is answered, and how a page is put together.
#include <gmock/gmock.h>

#include <array>
#include <sstream>
#include <thread>

#include "scan/scan_area.h"
#include "shared/scan/capabilities.h"
#include "shared/scan/error.h"
#include "shared/scan/esc_page.h"
#include "shared/scan/esc_replies.h"
#include "shared/scan/host_send_job.h"

namespace qvn::scan {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr char kDescription[] =
    "model=Simulated Printer\ndpi=75,100,150,200,300,600,1200\nmodes=bw,gray,color\n"
    "width=10200\nheight=14040\nfeeder=1\n";

// The problem that the action ends with, and its sentence.
std::pair<std::optional<Problem>, std::string> failureOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const Error& error) {
    return {error.problem(), error.what()};
  }
  return {std::nullopt, "none"};
}

TEST(Capabilities, AreReadFromTheDevicesText) {
  const Capabilities scanner = parseCapabilities(kDescription);
  EXPECT_EQ(scanner.model, "Simulated Printer");
  EXPECT_THAT(scanner.resolutions, ElementsAre(75u, 100u, 150u, 200u, 300u, 600u, 1200u));
  EXPECT_THAT(scanner.modes, ElementsAre(ColorMode::BlackAndWhite, ColorMode::Gray, ColorMode::Color));
  EXPECT_EQ(scanner.width, 10200u);
  EXPECT_EQ(scanner.height, 14040u);
  EXPECT_TRUE(scanner.feeder);
  EXPECT_EQ(scanner.defaults().dpi, 300u);
  EXPECT_EQ(scanner.defaults().mode, ColorMode::Gray);

  // Unknown keys and modes, another order, no feeder, no line end.
  const Capabilities other =
      parseCapabilities("lamp=1\nheight=2\nwidth=1\nmodes=infrared,color\ndpi=1200,600\nfeeder=0");
  EXPECT_THAT(other.resolutions, ElementsAre(600u, 1200u));
  EXPECT_THAT(other.modes, ElementsAre(ColorMode::Color));
  EXPECT_FALSE(other.feeder);
  EXPECT_EQ(other.defaults().dpi, 600u);
  EXPECT_EQ(other.defaults().mode, ColorMode::Color);
}

TEST(Capabilities, OfADeviceThatMakesNoSenseAreRefused) {
  for (const char* text :
       {"", "\n\n", "dpi=300\nmodes=bw\nwidth=1\n", "dpi=\nmodes=bw\nwidth=1\nheight=1\n",
        "dpi=0\nmodes=bw\nwidth=1\nheight=1\n", "dpi=300,\x00\nmodes=bw\nwidth=1\nheight=1\n",
        "dpi=300x\nmodes=bw\nwidth=1\nheight=1\n", "dpi=65536\nmodes=bw\nwidth=1\nheight=1\n",
        "dpi=300\nmodes=infrared\nwidth=1\nheight=1\n", "dpi=300\nmodes=bw\nwidth=-1\nheight=1\n",
        "dpi=300\nmodes=bw\nwidth=1\nheight=99999999999999999999\n",
        "dpi=,300\nmodes=bw\nwidth=1\nheight=1"}) {
    EXPECT_EQ(failureOf([&] { parseCapabilities(text); }).first, Problem::BadAnswer) << text;
  }
}

TEST(Capabilities, RefuseWhatTheScannerCannot) {
  const Capabilities scanner = parseCapabilities(kDescription);
  Capabilities flatbedOnly = scanner;
  flatbedOnly.feeder = false;
  flatbedOnly.modes = {ColorMode::Gray};
  const Area all{0, 0, 10200, 14040};
  const struct {
    const Capabilities& scanner;
    Settings settings;
    const char* sentence;  // "none" when they are fine
  } cases[] = {
      {scanner, {100, ColorMode::Color, all, Source::Feeder}, "none"},
      {scanner, {1200, ColorMode::BlackAndWhite, {10199, 14039, 1, 1}, Source::Flatbed}, "none"},
      {scanner, {99, ColorMode::Gray, all, Source::Flatbed}, "has no 99 dpi; it has 75, 100"},
      {scanner, {100, ColorMode::Gray, {1, 0, 10200, 1}, Source::Flatbed}, "215.9 by 297.2 mm"},
      {scanner, {100, ColorMode::Gray, {0, 14041, 100, 0}, Source::Flatbed}, "reaches beyond"},
      {scanner, {100, ColorMode::Gray, {0xFFFFFFFF, 0, 0xFFFFFFFF, 1}, Source::Flatbed}, "reaches beyond"},
      {scanner, {100, ColorMode::Gray, {0, 0, 11, 100}, Source::Flatbed}, "smaller than a dot"},
      {flatbedOnly, {100, ColorMode::Gray, all, Source::Feeder}, "has no feeder"},
      {flatbedOnly, {100, ColorMode::Color, all, Source::Flatbed}, "has no mode color"},
  };
  for (const auto& one : cases) {
    EXPECT_THAT(failureOf([&] { one.scanner.check(one.settings); }).second, HasSubstr(one.sentence));
  }
}

// What a device sends in a page.
using Command = std::vector<std::uint8_t>;

Command block(unsigned page, unsigned number, std::size_t length, std::size_t promised) {
  const auto byte = [](std::size_t value, int shift = 0) {
    return static_cast<std::uint8_t>(value >> shift);
  };
  Command command = {0x1B,           's', 'd', byte(promised), byte(promised, 8), byte(page), byte(number),
                     byte(number, 8)};
  command.resize(8 + length, byte(number));
  return command;
}
Command block(unsigned page, unsigned number, std::size_t length) {
  return block(page, number, length, length);
}
Command status(std::uint8_t code) { return {0x1B, 'S', 'S', code, 0, 0, 0, 0}; }

TEST(EscPageAssembler, TakesAPageAndNothingElse) {
  const struct {
    const char* name;
    std::vector<Command> commands;
    std::optional<Problem> problem;
    const char* sentence;
  } cases[] = {
      {"a page", {block(7, 0, 60), block(7, 1, 40), status(0)}, std::nullopt, "none"},
      {"empty blocks", {block(7, 0, 0), block(7, 1, 100), block(7, 2, 0), status(0)}, std::nullopt, "none"},
      {"no status", {block(7, 0, 100)}, std::nullopt, "none"},
      {"another page's block", {block(7, 0, 60), block(8, 1, 40)}, Problem::BadAnswer, "another page"},
      {"a block is missing", {block(7, 0, 60), block(7, 2, 40)}, Problem::BadAnswer, "block 2 of the page"},
      {"a block comes twice", {block(7, 0, 60), block(7, 0, 40)}, Problem::BadAnswer, "block 0"},
      {"does not begin", {block(7, 1, 100)}, Problem::BadAnswer, "block 1"},
      {"promises too much", {block(7, 0, 60, 61)}, Problem::BadAnswer, "60 bytes that says it has 61"},
      {"promises too little", {block(7, 0, 60, 59)}, Problem::BadAnswer, "60 bytes that says it has 59"},
      {"too long", {block(7, 0, 60), block(7, 1, 41)}, Problem::BadAnswer, "more than the 100 bytes"},
      {"too short", {block(7, 0, 99), status(0)}, Problem::BadAnswer, "after 99 of 100 bytes"},
      {"nothing but a status", {status(0)}, Problem::BadAnswer, "after 0 of 100"},
      {"empty data", {Command{}}, Problem::BadAnswer, "something else than a block"},
      {"half a header", {Command{0x1B, 's', 'd', 0}}, Problem::BadAnswer, "something else"},
      {"half a status", {Command{0x1B, 'S', 'S', 0}}, Problem::BadAnswer, "something else"},
      {"another command", {Command{0x1B, 's', 'v', 0, 0, 0, 0, 0}}, Problem::BadAnswer, "something else"},
      {"busy", {status(1)}, Problem::Busy, "busy"},
      {"refused", {status(2)}, Problem::Refused, "refuses the page"},
      {"aborted at the device", {block(7, 0, 60), status(3)}, Problem::Aborted, "aborted"},
      {"no sheet", {status(5)}, Problem::NoSheet, "no sheet"},
      {"connection lost", {block(7, 0, 60), status(0x0B)}, Problem::ConnectionLost, "lost"},
      {"unknown status", {status(0x77)}, Problem::BadAnswer, "status 119"},
  };
  for (const auto& [name, commands, problem, sentence] : cases) {
    SCOPED_TRACE(name);
    EscPageAssembler page(100);
    std::size_t taken = 0;
    const auto failure = failureOf([&, &all = commands] {
      for (const Command& command : all) taken += page.take(command).size();
    });
    EXPECT_EQ(failure.first, problem);
    EXPECT_THAT(failure.second, HasSubstr(sentence));
    EXPECT_LE(taken, 100u);
    EXPECT_EQ(page.complete(), !problem && isStatus(commands.back()));
  }
}

TEST(EscPageAssembler, CountsBlocksAnewAfter65536) {
  EscPageAssembler page(0x10002);
  for (unsigned number = 0; number < 0x10002; ++number) {
    ASSERT_EQ(page.take(block(1, number & 0xFFFF, 1)).size(), 1u) << number;
  }
  page.take(status(0));
  EXPECT_TRUE(page.complete());
}

TEST(EscPage, EndsWithTheFirstErrorAndDropsTheRest) {
  const CancelSignal cancel;
  EscPage page(100, cancel);
  page.receive(kScanData, block(1, 0, 10));
  page.receive(kScanData, block(1, 5, 10));
  page.receive(kScanData, block(1, 1, 10));
  page.receive(kScanData, status(5));
  std::array<std::uint8_t, 100> read{};
  EXPECT_EQ(page.pipe().take(read).count, 10u);
  EXPECT_EQ(page.pipe().take(read).state, PagePipe::State::End);
  ASSERT_TRUE(page.error());
  EXPECT_THAT(page.error()->what(), HasSubstr("block 5"));
}

// What a Bpd scanner's job tells, in order: a number is data of so many bytes, a word behind "!" a detail,
// any other an alert.
void deliver(HostSendJob& job, const std::string& events, char content = 'x') {
  std::istringstream words(events);
  for (std::string word; std::getline(words, word, ',');) {
    std::uint32_t kind = kAlert;
    if (word.find_first_not_of("0123456789") == std::string::npos) {
      kind = kScanData;
      word = std::string(std::stoul(word), content);
    } else if (word.front() == '!') {
      kind = kDetail;
      word.erase(0, 1);
    }
    job.receive(kind, {reinterpret_cast<const std::uint8_t*>(word.data()), word.size()});
  }
}

// A page of 100 bytes.
constexpr Settings kSmallPage{1200, ColorMode::Gray, {0, 0, 10, 10}, Source::Flatbed};

// Reads the page to its end: how many bytes came, all with that content.
std::size_t readPage(Page& page, std::uint8_t content) {
  std::size_t taken = 0;
  std::array<std::uint8_t, 64> buffer{};
  for (;;) {
    const auto [state, count] = page.pipe().take(buffer);
    if (state == PagePipe::State::End) return taken;
    for (std::size_t i = 0; i < count; ++i) EXPECT_EQ(buffer[i], content);
    taken += count;
    if (state == PagePipe::State::Nothing && !page.pipe().wait(std::chrono::seconds(30))) {
      ADD_FAILURE() << "the page does not end";
      return taken;
    }
  }
}

TEST(HostSendJob, TakesAPageAndNothingElse) {
  const CancelSignal cancel;
  constexpr Source kGlass = Source::Flatbed;
  constexpr Source kFeeder = Source::Feeder;
  const struct {
    Source source;
    const char* events;
    std::size_t bytes;
    std::optional<Problem> problem = std::nullopt;
    const char* sentence = "none";
  } cases[] = {
      {kGlass,
       "TimeoutX=10,!<?xml version=\"1.0\"?>,!Lamp.Warming,Job.Start,Page.Start,60,0,!Scanning,40,Page.End,"
       "Job.FlatbedEvent,Job.End,1",
       100},
      {kGlass, "Page.Start,60,Read Error=5,40,Page.End", 100},
      {kGlass, "Page.Start,60,41", 60, Problem::BadAnswer, "more than the 100 bytes"},
      {kGlass, "Page.Start,99,Page.End", 99, Problem::BadAnswer, "after 99 of 100 bytes"},
      {kGlass, "1", 0, Problem::BadAnswer, "outside of a page"},
      {kGlass, "Page.Start,60,Page.Start", 60, Problem::BadAnswer, "within another"},
      {kFeeder, "Page.End", 0, Problem::BadAnswer, "had not begun"},
      {kFeeder, "Page.Start,60,Job.End", 60, Problem::BadAnswer, "ended the job within a page"},
      {kGlass, "Job.End", 0, Problem::BadAnswer, "without a page"},
      {kFeeder, "Job.End", 0, Problem::NoSheet, "no sheet"},
      {kFeeder, "!No Original,!Scanner.CommError", 0, Problem::NoSheet, "no sheet"},
      {kGlass, "!Scanner.CommError", 0, Problem::Busy, "another host"},
      {kGlass, "Page.Start,60,!Cancelled,!Complete,Job.End", 60, Problem::Aborted, "aborted at the scanner"},
      {kGlass, "Page.Start,60,Job.DataTimeout,Scan.Error,Job.End", 60, Problem::Silent, "stopped sending"},
      {kGlass, "Page.Start,60,Read Error=64,Job.DataTimeout", 60, Problem::ConnectionLost, "lost"},
  };
  for (const auto& [source, events, bytes, problem, sentence] : cases) {
    SCOPED_TRACE(events);
    Settings settings = kSmallPage;
    settings.source = source;
    HostSendJob job(settings, std::chrono::seconds(30));
    const auto page = std::make_shared<Page>(cancel);
    job.offer(page);
    deliver(job, events);
    EXPECT_EQ(readPage(*page, 'x'), bytes);
    ASSERT_EQ(page->error().has_value(), problem.has_value());
    if (!problem) continue;
    EXPECT_EQ(page->error()->problem(), *problem);
    EXPECT_THAT(page->error()->what(), HasSubstr(sentence));
    // Whoever asks for a page after that hears the same.
    const auto next = std::make_shared<Page>(cancel);
    job.offer(next);
    EXPECT_EQ(readPage(*next, 'x'), 0u);
    ASSERT_TRUE(next->error());
    EXPECT_EQ(next->error()->problem(), *problem);
  }
}

TEST(HostSendJob, EndsWhenNobodyWantsTheNextPageInTime) {
  const CancelSignal cancel;
  HostSendJob job(kSmallPage, std::chrono::milliseconds(0));
  deliver(job, "Page.Start,100");
  const auto page = std::make_shared<Page>(cancel);
  job.offer(page);
  EXPECT_EQ(readPage(*page, 'x'), 0u);
  ASSERT_TRUE(page->error());
  EXPECT_THAT(page->error()->what(), HasSubstr("nobody asked for the next page"));
}

TEST(HostSendJob, LetsTheScannerGoOnWhenItIsDropped) {
  const CancelSignal cancel;
  constexpr Settings kLargePage{1200, ColorMode::Gray, {0, 0, 10200, 1000}, Source::Feeder};
  const auto page = std::make_shared<Page>(cancel);
  for (const bool withinPage : {true, false}) {
    HostSendJob job(kLargePage, std::chrono::hours(1));
    if (withinPage) job.offer(page);
    std::thread device([&] {
      deliver(job, "Page.Start,10200000,Page.End");  // more than the pipe holds
    });
    if (withinPage) {
      EXPECT_TRUE(page->pipe().wait(std::chrono::seconds(30)));
      page->pipe().leave();
    } else {
      job.waitForLastPage(std::chrono::seconds(30));
    }
    job.drop();
    device.join();
  }
}

TEST(Area, IsReadInMillimetres) {
  const struct {
    const char* text;
    std::optional<std::array<std::uint32_t, 4>> units;
  } cases[] = {
      {"0x0x25.4x50.8", {{0, 0, 1200, 2400}}},
      {"10x20x105.5x148", {{472, 945, 4984, 6992}}},
      {"0.01x0x215.9x297.18", {{0, 0, 10200, 14040}}},
      {"", std::nullopt},
      {"10x20x30", std::nullopt},
      {"10x20x30x40x50", std::nullopt},
      {"10x20x30x", std::nullopt},
      {"10x20x30x4O", std::nullopt},
      {"10 x20x30x40", std::nullopt},
      {"-1x0x10x10", std::nullopt},
      {"nanx0x10x10", std::nullopt},
      {"infx0x10x10", std::nullopt},
      {"1e3x0x10x10", std::nullopt},
      {"0x0x99999999x10", std::nullopt},
  };
  for (const auto& [text, units] : cases) {
    const auto area = cli::parseArea(text);
    ASSERT_EQ(area.has_value(), units.has_value()) << text;
    if (area) {
      EXPECT_THAT((std::array{area->left, area->top, area->width, area->height}),
                  testing::ContainerEq(*units))
          << text;
    }
  }
}

}  // namespace
}  // namespace qvn::scan
