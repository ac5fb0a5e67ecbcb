#include "progress_bar.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <iostream>

#include "platform/clock.h"

namespace qvn::cli {

namespace {

constexpr std::uint64_t kRedrawInterval = 100;
constexpr std::size_t kBarWidth = 24;

// Back to the first column, the rest of the line erased.
constexpr char kClearLine[] = "\r\x1b[K";

std::string formatSeconds(std::uint64_t seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%02u:%02u", static_cast<unsigned>(seconds / 60 % 100000),
                static_cast<unsigned>(seconds % 60));
  return text;
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

std::string progressLine(const std::string& label, std::uint64_t done, std::optional<std::uint64_t> total,
                         std::uint64_t elapsed) {
  const double rate = elapsed == 0 ? 0 : static_cast<double>(done) * 1000 / static_cast<double>(elapsed);
  std::string line = label + "  ";
  if (total && *total > 0) {
    const double part = std::min(1.0, static_cast<double>(done) / static_cast<double>(*total));
    const auto filled = static_cast<std::size_t>(part * kBarWidth);
    line += "[" + std::string(filled, '=') + std::string(kBarWidth - filled, ' ') + "] ";
    char percent[16];
    std::snprintf(percent, sizeof percent, "%3.0f%%  ", part * 100);
    line += percent;
  }
  line += formatBytes(static_cast<double>(done));
  if (total) {
    line += " of " + formatBytes(static_cast<double>(*total));
  }
  line += "  " + formatBytes(rate) + "/s";
  if (total && rate > 0 && *total > done) {
    line +=
        "  " + formatSeconds(static_cast<std::uint64_t>(static_cast<double>(*total - done) / rate)) + " left";
  }
  return line;
}

bool standardErrorIsTerminal() { return isatty(STDERR_FILENO) == 1; }

ProgressBar::ProgressBar(std::string label, std::optional<std::uint64_t> total, bool visible)
    : label_(std::move(label)),
      total_(total),
      visible_(visible),
      started_(platform::clock().monotonicMilliseconds()) {}

ProgressBar::~ProgressBar() {
  if (visible_) {
    std::cerr << kClearLine << std::flush;
  }
}

void ProgressBar::update(std::uint64_t done) {
  const std::uint64_t now = platform::clock().monotonicMilliseconds();
  if (!visible_ || now - drawn_ < kRedrawInterval) {
    return;
  }
  drawn_ = now;
  std::cerr << kClearLine << progressLine(label_, done, total_, now - started_) << std::flush;
}

void ProgressBar::note(const std::string& text) {
  if (visible_) {
    std::cerr << kClearLine << label_ << "  " << text << std::flush;
  }
}

}  // namespace qvn::cli
