#include "progress_bar.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <iostream>

#include "platform/base/clock.h"
#include "shared/client/output.h"

namespace qvn::cli {

namespace {

constexpr std::chrono::milliseconds kRedrawInterval{100};
// A rate says nothing before, and a pause nothing until then.
constexpr std::uint64_t kRateAfter = 1000;
constexpr std::uint64_t kStalledAfter = 3000;
constexpr std::size_t kColumns = 80;
constexpr std::size_t kShortestLabel = 8;
constexpr std::size_t kBarWidth = 24;

// Back to the first column, the rest of the line erased.
constexpr char kClearLine[] = "\r\x1b[K";

std::string formatSeconds(std::uint64_t seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%02u:%02u", static_cast<unsigned>(seconds / 60 % 100000),
                static_cast<unsigned>(seconds % 60));
  return text;
}

// A number by itself, which another with the unit's name may follow.
std::string format(double amount, ProgressUnit unit) {
  if (unit == ProgressUnit::Bytes) return formatBytes(amount);
  char text[32];
  std::snprintf(text, sizeof text, "%.0f", amount);
  return text;
}

// The terminal's columns; what does not say gets 80.
std::size_t columns() {
  winsize size = {};
  return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kColumns;
}

// The label before the text, shortened at its end so that both fit on the line, and both where the line is
// too short for anything.
std::string fitted(const std::string& label, const std::string& text, std::size_t columns) {
  const std::size_t taken = width(text) + 3;
  return onOneLine(
      onOneLine(label, columns > taken + kShortestLabel ? columns - taken : kShortestLabel) + "  " + text,
      columns - 1);
}

}  // namespace

std::string formatBytes(double bytes) {
  constexpr const char* kUnits[] = {"B", "kB", "MB", "GB", "TB"};
  std::size_t unit = 0;
  while (bytes >= 1000 && unit + 1 < std::size(kUnits)) {
    bytes /= 1000;
    ++unit;
  }
  char text[48];
  std::snprintf(text, sizeof text, unit == 0 ? "%.0f %s" : "%.1f %s", bytes, kUnits[unit]);
  return text;
}

std::string progressLine(const Progress& progress, std::size_t columns) {
  std::string text;
  if (progress.total && *progress.total > 0) {
    const double part =
        std::min(1.0, static_cast<double>(progress.done) / static_cast<double>(*progress.total));
    const auto filled = static_cast<std::size_t>(part * kBarWidth);
    text += "[" + std::string(filled, '=') + std::string(kBarWidth - filled, ' ') + "] ";
    char percent[16];
    std::snprintf(percent, sizeof percent, "%3.0f%%  ", part * 100);
    text += percent;
  }
  text += format(static_cast<double>(progress.done), progress.unit);
  if (progress.total) text += " of " + format(static_cast<double>(*progress.total), progress.unit);
  const char* const name = progress.unit == ProgressUnit::Lines ? " lines" : "";
  text += name;
  if (progress.idle >= kStalledAfter) {
    text += "  " + progress.stalled + " (" + formatSeconds(progress.idle / 1000) + ")";
  } else if (progress.elapsed >= kRateAfter) {
    const double rate = static_cast<double>(progress.done) * 1000 / static_cast<double>(progress.elapsed);
    text += "  " + format(rate, progress.unit) + name + "/s";
    if (progress.total && rate > 0 && *progress.total > progress.done) {
      const double left = static_cast<double>(*progress.total - progress.done) / rate;
      text += "  " + formatSeconds(static_cast<std::uint64_t>(left)) + " left";
    }
  }
  return fitted(progress.label, text, columns);
}

bool standardErrorIsTerminal() { return isatty(STDERR_FILENO) == 1; }
bool standardInputIsTerminal() { return isatty(STDIN_FILENO) == 1; }

ProgressBar::ProgressBar(std::string label, std::optional<std::uint64_t> total, bool visible,
                         std::string stalled, ProgressUnit unit)
    : started_(platform::clock().monotonicMilliseconds()), moved_(started_) {
  progress_.label = std::move(label);
  progress_.unit = unit;
  progress_.total = total;
  progress_.stalled = std::move(stalled);
  if (!visible) return;
  drawing_ = std::thread([this] {
    std::unique_lock<std::mutex> lock(mutex_);
    while (!changed_.wait_for(lock, kRedrawInterval, [this] { return ended_; })) draw();
  });
}

ProgressBar::~ProgressBar() {
  if (!drawing_.joinable()) return;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    ended_ = true;
  }
  changed_.notify_all();
  drawing_.join();
  std::cerr << kClearLine << std::flush;
}

void ProgressBar::draw() {
  const std::uint64_t now = platform::clock().monotonicMilliseconds();
  progress_.elapsed = now - started_;
  progress_.idle = now - moved_;
  const std::string line =
      note_.empty()
          ? progressLine(progress_, columns())
          : fitted(progress_.label, note_ + " (" + formatSeconds(progress_.idle / 1000) + ")", columns());
  std::cerr << kClearLine << line << std::flush;
}

void ProgressBar::update(std::uint64_t done) {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (done == progress_.done) return;
  progress_.done = done;
  moved_ = platform::clock().monotonicMilliseconds();
}

void ProgressBar::note(const std::string& text) {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (text == note_) return;
  note_ = text;
  moved_ = platform::clock().monotonicMilliseconds();
}

}  // namespace qvn::cli
