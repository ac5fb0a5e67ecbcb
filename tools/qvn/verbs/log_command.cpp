// qvn log: the library's log file.
#include <deque>
#include <fstream>
#include <iostream>
#include <memory>

#include "common/settings/setting_table.h"
#include "library_settings.h"
#include "platform/files/paths.h"
#include "shared/client/failure.h"
#include "shared/client/interrupt.h"
#include "verbs/commands.h"
#include "verbs/verb.h"

namespace qvn::cli {

namespace {

constexpr int kFollowInterval = 200;  // milliseconds
constexpr std::size_t kLinesBeforeFollowing = 10;

std::filesystem::path logFile() { return platform::nativePath("c:\\qr__.log"); }

void turn(bool on) {
  namespace registry = platform::registry;
  writeLibraryValue(setting::kStartLog.key, setting::kStartLog.name,
                    {registry::ValueType::Dword, registry::dwordBytes(on ? 1 : 0)});
}

// Prints the last `count` lines (all when 0) as they stand, less the carriage returns, and returns the offset
// up to which the log was read.
std::uintmax_t show(std::size_t count) {
  std::ifstream file(logFile(), std::ios::binary);
  if (!file) {
    throw Failure("nothing has been logged yet: there is no '" + logFile().string() + "'");
  }
  std::uintmax_t end = 0;
  std::deque<std::string> lines;
  for (std::string line; std::getline(file, line);) {
    end += line.size() + (file.eof() ? 0 : 1);
    if (line.ends_with('\r')) {
      line.pop_back();
    }
    if (count == 0) {
      std::cout << line << '\n';
      continue;
    }
    lines.push_back(std::move(line));
    if (lines.size() > count) {
      lines.pop_front();
    }
  }
  for (const std::string& line : lines) {
    std::cout << line << '\n';
  }
  return end;
}

// Prints the end of the log and what is logged from then on. A log that was deleted and begun anew is read
// from its beginning.
void follow() {
  Interrupt::install();
  std::error_code none;
  std::uintmax_t at = std::filesystem::exists(logFile(), none) ? show(kLinesBeforeFollowing) : 0;
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
  Verb verb = root.addVerb("log", "Turn the log on and off, show it and follow it");
  verb.requireVerb();
  verb.footer(
      "Errors are logged always; calls and details once the log is on, by every program that uses the\n"
      "library, within 10 s. The file only grows; delete it when it is too long.\n\n"
      "Examples:\n"
      "  qvn log on\n"
      "  qvn log show --lines 50\n"
      "  qvn log follow");

  verb.addVerb("on", "Log calls and details").callback([] { turn(true); });
  verb.addVerb("off", "Log errors only").callback([] { turn(false); });

  const auto lines = std::make_shared<std::size_t>(0);
  Verb showVerb = verb.addVerb("show", "Print the log");
  showVerb.addOption("--lines", *lines, "Only so many lines at its end");
  showVerb.callback([lines] { show(*lines); });

  verb.addVerb("follow", "Print the last lines and what is logged from then on, until Ctrl-C")
      .callback(follow);
  verb.addVerb("path", "Print the log's file name").callback([] { std::cout << logFile().string() << '\n'; });
}

}  // namespace qvn::cli
