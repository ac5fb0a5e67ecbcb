// qvn log: the library's log file.
#include <array>
#include <chrono>
#include <cstdio>
#include <deque>
#include <fstream>
#include <iostream>
#include <memory>

#include "common/settings/setting_table.h"
#include "library_settings.h"
#include "log_lines.h"
#include "platform/files/paths.h"
#include "shared/client/failure.h"
#include "shared/client/interrupt.h"
#include "verbs/commands.h"
#include "verbs/quiet.h"
#include "verbs/verb.h"

namespace qvn::cli {

namespace {

constexpr int kFollowInterval = 200;  // milliseconds
constexpr std::size_t kLinesBeforeFollowing = 10;

std::filesystem::path logFile() { return platform::nativePath("c:\\qr__.log"); }

struct ShowOptions {
  std::size_t lines = 0;  // 0: all
  std::string since{};
  bool errors = false;
};

std::string status() {
  std::string said = "off: errors only";
  if (numberSetting(setting::kStartLog) != 0) {
    std::array<char, 16> levels{};
    std::snprintf(levels.data(), levels.size(), "0x%08X",
                  numberSetting({setting_key::kLogger, "All", 0xFFFFFFFF}));
    said = std::string("on: levels ") + levels.data() + " of every component";
  }
  std::error_code none;
  const std::uintmax_t size = std::filesystem::file_size(logFile(), none);
  return said + ", into " + logFile().string() +
         (none ? ", which is not there yet" : ", " + std::to_string(size) + " bytes");
}

void turn(bool on, bool quiet) {
  namespace registry = platform::registry;
  writeLibraryValue(setting::kStartLog.key, setting::kStartLog.name,
                    {registry::ValueType::Dword, registry::dwordBytes(on ? 1 : 0)});
  say(quiet, "the log is " + status());
}

// Prints the last lines that are asked for (all when 0) as they stand, less the carriage returns, and returns
// the offset up to which the log was read.
std::uintmax_t show(const ShowOptions& options) {
  const std::string since =
      options.since.empty() ? "" : logTimeOf(options.since, std::chrono::system_clock::now());
  std::ifstream file(logFile(), std::ios::binary);
  if (!file) {
    throw Failure("nothing has been logged yet: there is no '" + logFile().string() + "'");
  }
  std::uintmax_t end = 0;
  std::deque<std::string> lines;
  bool hasTimes = false;
  bool hasShown = false;
  bool isWanted = since.empty() && !options.errors;
  for (std::string line; std::getline(file, line);) {
    end += line.size() + (file.eof() ? 0 : 1);
    if (line.ends_with('\r')) {
      line.pop_back();
    }
    const std::string_view time = timeOfLogLine(line);
    hasTimes = hasTimes || !time.empty();
    // What has no time in a log that has them is the rest of the entry before.
    if (!time.empty() || !hasTimes) {
      isWanted = time >= since && (!options.errors || tellsError(line));
    }
    if (!isWanted) {
      continue;
    }
    hasShown = true;
    if (options.lines == 0) {
      std::cout << line << '\n';
      continue;
    }
    lines.push_back(std::move(line));
    if (lines.size() > options.lines) {
      lines.pop_front();
    }
  }
  if (!since.empty() && !hasTimes && end > 0) {
    throw Failure(
        "the lines of the log have no times: 'qvn settings set Clocktime_In_Header 1' gives them some");
  }
  for (const std::string& line : lines) {
    std::cout << line << '\n';
  }
  if (!hasShown && end > 0) {
    hint("the log has no such lines; 'qvn log status' tells what is logged");
  }
  return end;
}

// Prints the end of the log and what is logged from then on. A log that was deleted and begun anew is read
// from its beginning.
void follow() {
  Interrupt::install();
  std::error_code none;
  std::uintmax_t at = std::filesystem::exists(logFile(), none) ? show({.lines = kLinesBeforeFollowing}) : 0;
  std::cout.flush();
  while (!Interrupt::requested()) {
    const std::uintmax_t size = std::filesystem::file_size(logFile(), none);
    if (!none && size < at) {
      at = 0;
    }
    if (!none && size > at) {
      std::ifstream file(logFile(), std::ios::binary);
      file.seekg(static_cast<std::streamoff>(at));
      std::string text(static_cast<std::size_t>(std::min<std::uintmax_t>(size - at, 1 << 20)), '\0');
      file.read(text.data(), static_cast<std::streamsize>(text.size()));
      text.resize(static_cast<std::size_t>(file.gcount()));
      at += text.size();
      std::erase(text, '\r');
      std::cout << text << std::flush;
      if (!std::cout) {
        return;
      }
      continue;
    }
    Interrupt::waitReadable(-1, kFollowInterval);
  }
  throw Interrupted("stopped following the log");
}

}  // namespace

void addLogCommand(Verb& root) {
  struct Options {
    ShowOptions show;
    bool quiet = false;
    bool isAnswered = false;
  };
  const auto options = std::make_shared<Options>();
  Verb verb = root.addVerb("log", "Turn the log on and off, show it and follow it");
  verb.footer(
      "Without a verb it tells whether the log is on. What goes wrong inside the library is logged always;\n"
      "calls, with the result that each caller was given, and details once the log is on, by every program\n"
      "that uses the library, within 10 s. The file only grows; delete it when it is too long.\n\n"
      "Examples:\n"
      "  qvn log on\n"
      "  qvn log show --errors --since 2h\n"
      "  qvn log follow");
  // The verb itself is called after the one below it that was given.
  const auto addVerb = [&](const char* name, const char* help, const char* examples,
                           std::function<void(const Options&)> run) {
    Verb added = verb.addVerb(name, help);
    added.footer(std::string("Examples:\n") + examples);
    added.callback([options, run = std::move(run)] {
      options->isAnswered = true;
      run(*options);
    });
    return added;
  };
  const auto printStatus = [] { std::cout << status() << '\n'; };
  verb.callback([options, printStatus] {
    if (!options->isAnswered) printStatus();
  });
  addVerb("status", "Tell whether the log is on, and its file", "  qvn log status",
          [printStatus](const Options&) { printStatus(); });
  Verb onVerb = addVerb("on", "Log calls and details", "  qvn log on",
                        [](const Options& given) { turn(true, given.quiet); });
  addQuiet(onVerb, options->quiet);
  Verb offVerb = addVerb("off", "Log errors only", "  qvn log off",
                         [](const Options& given) { turn(false, given.quiet); });
  addQuiet(offVerb, options->quiet);

  Verb showVerb = addVerb("show", "Print the log",
                          "  qvn log show --lines 50\n"
                          "  qvn log show --errors --since 2h\n"
                          "  qvn log show --since '2026-11-26 10:00'",
                          [](const Options& given) { show(given.show); });
  showVerb.addOption("--lines", options->show.lines, "Only so many lines at its end");
  showVerb.addOption("--since", options->show.since,
                     "Only from that time on: 10m, 2h, 7d ago, 10:00, 2026-11-26, or a day and a time");
  showVerb.addFlag("--errors", options->show.errors, "Only what failed");

  addVerb("follow", "Print the last lines and what is logged from then on, until Ctrl-C", "  qvn log follow",
          [](const Options&) { follow(); });
  addVerb("path", "Print the log's file name", "  tail \"$(qvn log path)\"",
          [](const Options&) { std::cout << logFile().string() << '\n'; });
}

}  // namespace qvn::cli
