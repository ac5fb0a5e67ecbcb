// qvn scan: pages from a scanner into files.
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <limits>
#include <memory>
#include <nlohmann/json.hpp>

#include "progress_bar.h"
#include "scan/output_file.h"
#include "scan/page_files.h"
#include "scan/scan_area.h"
#include "shared/client/devices.h"
#include "shared/client/failure.h"
#include "shared/client/interrupt.h"
#include "shared/client/leave.h"
#include "shared/client/standard_output.h"
#include "shared/client/text_values.h"
#include "shared/scan/scanner_families.h"
#include "verbs/commands.h"
#include "verbs/verb.h"

namespace qvn::cli {

namespace {

constexpr unsigned kAllPages = std::numeric_limits<unsigned>::max();
// Lines are taken in pieces of about that many bytes.
constexpr std::size_t kPiece = std::size_t{256} * 1024;
// No deflate stream is shorter than its data by more than that.
constexpr std::uint64_t kBestCompression = 1032;

struct Options {
  std::string device;
  std::optional<std::uint32_t> dpi;
  std::string mode;
  std::string area;
  std::string source;
  std::string pages;
  unsigned timeout = 60;
  std::string output;
  bool json = false;
};

// What the options say by themselves.
struct Wanted {
  std::optional<scan::ColorMode> mode;
  std::optional<scan::Area> area;
  scan::Source source = scan::Source::Flatbed;
  unsigned pages = 1;
};

Wanted parse(const Options& options) {
  Wanted wanted;
  if (!options.mode.empty()) wanted.mode = scan::colorModeNamed(options.mode);
  if (options.source == "feeder") wanted.source = scan::Source::Feeder;
  if (!options.area.empty()) {
    wanted.area = parseArea(options.area);
    if (!wanted.area) {
      throw UsageError("an area is left, top, width and height in millimetres, for example 0x0x210x297");
    }
  }
  if (options.pages.empty()) {
    if (wanted.source == scan::Source::Feeder && options.output != "-") wanted.pages = kAllPages;
  } else if (options.pages == "all") {
    wanted.pages = kAllPages;
  } else if (const auto number = parseNumber(options.pages); number && *number > 0 && *number < kAllPages) {
    wanted.pages = *number;
  } else {
    throw UsageError("--pages takes a number from 1 up, or all");
  }
  if (wanted.pages > 1 && wanted.source == scan::Source::Flatbed) {
    throw UsageError("the flatbed has one page: several come from --source feeder");
  }
  if (!isPageFileName(options.output)) {
    throw UsageError("the output is a file that ends in .png, .tif or .tiff, or - for standard output");
  }
  if (options.output == "-") {
    if (wanted.pages > 1) throw UsageError("standard output takes one page");
    if (options.json) throw UsageError("standard output takes the page or the lines of --json, not both");
    if (isatty(standardOutput()) == 1)
      throw UsageError("standard output is a terminal, which shows no picture");
  }
  return wanted;
}

scan::Settings settingsFor(const scan::Capabilities& scanner, const Options& options, const Wanted& wanted) {
  scan::Settings settings = scanner.defaults();
  settings.source = wanted.source;
  settings.dpi = options.dpi.value_or(settings.dpi);
  settings.mode = wanted.mode.value_or(settings.mode);
  settings.area = wanted.area.value_or(settings.area);
  scanner.check(settings);
  return settings;
}

// Copies the page in hand, line by line.
void copyPage(scan::Scanner& scanner, PageFiles& files, const scan::PageSize& size, ProgressBar& progress) {
  const auto lineBytes = static_cast<std::size_t>(size.bytesPerLine);
  std::vector<std::uint8_t> buffer(lineBytes * std::max<std::size_t>(1, kPiece / lineBytes));
  std::size_t filled = 0;
  std::uint64_t lines = 0;
  while (const std::size_t count = scanner.read(std::span(buffer).subspan(filled))) {
    filled += count;
    std::size_t used = 0;
    for (; filled - used >= lineBytes; used += lineBytes) {
      files.writeRow(buffer.data() + used);
      ++lines;
    }
    std::copy(buffer.data() + used, buffer.data() + filled, buffer.data());
    filled -= used;
    progress.update(lines);
  }
}

Json describePage(const std::string& file, unsigned page, const scan::Settings& settings) {
  const scan::PageSize size = scan::pageSize(settings);
  return {{"file", file},         {"page", page},        {"width", size.dots},
          {"height", size.lines}, {"dpi", settings.dpi}, {"mode", scan::nameOf(settings.mode)},
          {"bytes", size.bytes()}};
}

void printPages(std::vector<Json>& pages, const Options& options) {
  std::ostream& out = options.output == "-" ? std::cerr : std::cout;
  for (const Json& page : pages) {
    if (options.json) {
      out << page.dump(-1, ' ', false, Json::error_handler_t::replace) << std::endl;
    } else {
      out << "scanned page " << cell(page["page"]) << " to " << cell(page["file"]) << ": "
          << cell(page["width"]) << " x " << cell(page["height"]) << " dots, " << cell(page["mode"]) << ", "
          << cell(page["dpi"]) << " dpi" << std::endl;
    }
  }
  pages.clear();
}

// False when there is no page any more.
bool startPage(scan::Scanner& scanner, unsigned page) {
  try {
    scanner.startPage();
    return true;
  } catch (const scan::Error& error) {
    if (page == 1 || error.problem() != scan::Problem::NoSheet) throw;
    return false;
  }
}

void scanPages(const Device& device, const Options& options, const Wanted& wanted) {
  auto connecting = std::make_unique<LeaveOnInterrupt>("interrupted while connecting to " + device.text());
  const auto scanner = scan::openScanner(device.handle, std::chrono::seconds(options.timeout));
  connecting.reset();
  const OnInterrupt canceller([&] {
    sayNow("aborting the page, which can take half a minute; Ctrl-C again leaves at once");
    scanner->cancel();
  });
  const scan::Settings settings = settingsFor(scanner->capabilities(), options, wanted);
  const scan::PageSize size = scan::pageSize(settings);
  if (options.output != "-") requireRoom(options.output, size.bytes() / kBestCompression);
  const auto files = makePageFiles(options.output, wanted.pages > 1);

  scanner->lock();
  scanner->apply(settings);
  std::vector<Json> pages;
  unsigned page = 1;
  for (; page <= wanted.pages && startPage(*scanner, page); ++page) {
    {
      ProgressBar progress("page " + std::to_string(page), size.lines, standardErrorIsTerminal(),
                           "no data from the scanner; Ctrl-C aborts", ProgressUnit::Lines);
      files->beginPage(settings);
      copyPage(*scanner, *files, size, progress);
    }
    pages.push_back(describePage(files->endPage(), page, settings));
    if (files->eachPageIsAFile()) printPages(pages, options);
  }
  files->keep();
  printPages(pages, options);
  if (wanted.pages != kAllPages && page <= wanted.pages) {
    throw Failure("the feeder was empty after " + std::to_string(page - 1) + " of " +
                  std::to_string(wanted.pages) + " pages");
  }
}

void scan(const Options& options) {
  const Wanted wanted = parse(options);
  Interrupt::install();
  // A reader that has gone and a file that grows too large are failures of writing, which leave the scanner
  // ready; by themselves they would end the process.
  signal(SIGPIPE, SIG_IGN);
  signal(SIGXFSZ, SIG_IGN);
  const Session session;
  const Device device = selectNamed(session, kindNamed("scanner"), options.device);
  try {
    scanPages(device, options, wanted);
  } catch (const scan::Error& error) {
    if (error.problem() == scan::Problem::Cancelled) throw Interrupted(error.what());
    if (error.code() != QRN_ERROR_SUCCESS) {
      throw Failure(error.what(), error.code(), placeOf(session, device));
    }
    throw Failure(error.what());
  }
}

}  // namespace

void addScanCommand(Verb& root) {
  const auto options = std::make_shared<Options>();
  Verb verb = root.addVerb("scan", "Scan pages into PNG or TIFF files");
  verb.addOption("FILE,-o,--output", options->output, "FILE.png, FILE.tif, or - for a PNG on standard output")
      .required();
  verb.addDevice(options->device, "scanner");
  verb.addOption("--dpi", options->dpi, "Dots per inch; otherwise 300, or what comes nearest below");
  verb.addOption("--mode", options->mode, "bw, gray or color; otherwise gray").oneOf({"bw", "gray", "color"});
  verb.addOption("--area", options->area,
                 "Left, top, width and height in millimetres, as in 10x20x105.5x148; otherwise all");
  verb.addOption("--source", options->source, "flatbed or feeder; otherwise the flatbed")
      .oneOf({"flatbed", "feeder"});
  verb.addOption("--pages", options->pages, "How many pages from the feeder; otherwise all");
  verb.addOption("--timeout", options->timeout,
                 "Give up when no block has come from the scanner for so many seconds")
      .between(1, 3600)
      .showDefault();
  verb.addJson(options->json, "Print a line of JSON for each page");
  verb.footer(
      "A scanner sends a page in blocks, of 32 kB in most: a block that is not complete yet counts as "
      "nothing\n"
      "sent. A TIFF holds all pages; of several pages to page.png each becomes a file, page-1.png and so "
      "on.\n"
      "Ctrl-C aborts the page on the scanner and leaves no half file; a second one ends at once.\n\n"
      "Examples:\n"
      "  qvn scan page.png\n"
      "  qvn scan --dpi 600 --mode color --area 0x0x105x148 photo.png\n"
      "  qvn scan --source feeder --mode bw letter.tif\n"
      "  qvn scan - >page.png");
  verb.callback([options] { scan(*options); });
}

}  // namespace qvn::cli
