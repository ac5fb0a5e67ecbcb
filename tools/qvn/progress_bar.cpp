#include "progress_bar.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <iostream>

#include "platform/base/clock.h"

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

// A number by itself, which another with the unit's name may follow.
std::string format(double amount, ProgressUnit unit) {
  if (unit == ProgressUnit::Bytes) return formatBytes(amount);
  char text[32];
  std::snprintf(text, sizeof text, "%.0f", amount);
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
                         std::uint64_t elapsed, ProgressUnit unit) {
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
  line += format(static_cast<double>(done), unit);
  if (total) {
    line += " of " + format(static_cast<double>(*total), unit);
  }
  const char* const name = unit == ProgressUnit::Lines ? " lines" : "";
  line += name + ("  " + format(rate, unit)) + name + "/s";
  if (total && rate > 0 && *total > done) {
    line +=
        "  " + formatSeconds(static_cast<std::uint64_t>(static_cast<double>(*total - done) / rate)) + " left";
  }
  return line;
}

bool standardErrorIsTerminal() { return isatty(STDERR_FILENO) == 1; }

ProgressBar::ProgressBar(std::string label, std::optional<std::uint64_t> total, bool visible,
                         ProgressUnit unit)
    : label_(std::move(label)),
      total_(total),
      visible_(visible),
      unit_(unit),
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
  std::cerr << kClearLine << progressLine(label_, done, total_, now - started_, unit_) << std::flush;
}

void ProgressBar::note(const std::string& text) {
  if (visible_) {
    std::cerr << kClearLine << label_ << "  " << text << std::flush;
  }
}

}  // namespace qvn::cli
