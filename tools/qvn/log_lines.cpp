#include "log_lines.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <optional>
#include <regex>

#include "platform/base/clock.h"
#include "shared/client/failure.h"

namespace qvn::cli {

namespace {

constexpr std::string_view kTimePattern = "dddd/dd/dd-dd:dd:dd.ddd";

// What messages of errors have in them, in lower case.
constexpr std::array kErrorWords = {
    "fail",
    "exception",
    "error",
    "cannot",
    "could not",
    "not running",
    "not found",
    "never received",
    "busy",
    "unable",
    "insufficient",
    "does not end",
    "does not contain",
    "is missing",
    "gave nothing",
    "!!!",
    "attempt to set",
    "cannot be 0",
    "no connection",
    "queryjobscompleted response",
};

std::string shownTime(const platform::LocalTime& time) {
  std::array<char, 96> text{};
  std::snprintf(text.data(), text.size(), "%04d/%02d/%02d-%02d:%02d:%02d.%03d", time.year, time.month,
                time.day, time.hour, time.minute, time.second, time.millisecond);
  return text.data();
}

std::optional<std::chrono::seconds> agoOf(const std::string& text) {
  static const std::regex kAgo("([0-9]{1,6})([smhd])");
  std::smatch parts;
  if (!std::regex_match(text, parts, kAgo)) return std::nullopt;
  const int count = std::stoi(parts[1]);
  switch (parts[2].str().front()) {
    case 's':
      return std::chrono::seconds(count);
    case 'm':
      return std::chrono::minutes(count);
    case 'h':
      return std::chrono::hours(count);
    default:
      return std::chrono::hours(24) * count;
  }
}

}  // namespace

std::string_view timeOfLogLine(std::string_view line) {
  const std::string_view time = line.substr(0, kTimePattern.size());
  const bool fits = time.size() == kTimePattern.size() &&
                    std::equal(time.begin(), time.end(), kTimePattern.begin(), [](char c, char wanted) {
                      return wanted == 'd' ? std::isdigit(static_cast<unsigned char>(c)) != 0 : c == wanted;
                    });
  return fits ? time : std::string_view();
}

std::string logTimeOf(const std::string& text, std::chrono::system_clock::time_point now) {
  if (const auto ago = agoOf(text)) return shownTime(platform::localTime(now - *ago));
  static const std::regex kMoment(
      "(?:([0-9]{4})-([0-9]{2})-([0-9]{2}))?(?:^|[ T]|$)(?:([0-9]{2}):([0-9]{2})(?::([0-9]{2}))?)?");
  std::smatch parts;
  if (!text.empty() && std::regex_match(text, parts, kMoment) && (parts[1].matched || parts[4].matched)) {
    platform::LocalTime time = platform::localTime(now);
    if (parts[1].matched) {
      time.year = std::stoi(parts[1]);
      time.month = std::stoi(parts[2]);
      time.day = std::stoi(parts[3]);
    }
    time.hour = parts[4].matched ? std::stoi(parts[4]) : 0;
    time.minute = parts[5].matched ? std::stoi(parts[5]) : 0;
    time.second = parts[6].matched ? std::stoi(parts[6]) : 0;
    time.millisecond = 0;
    const std::chrono::year_month_day day(std::chrono::year(time.year),
                                          std::chrono::month(static_cast<unsigned>(time.month)),
                                          std::chrono::day(static_cast<unsigned>(time.day)));
    if (day.ok() && time.hour < 24 && time.minute < 60 && time.second < 60) return shownTime(time);
  }
  throw UsageError("'" + text +
                   "' is no time: 30s, 10m, 2h or 7d ago, 10:00, 2026-11-26 or '2026-11-26 10:00'");
}

bool tellsError(std::string_view line) {
  std::string lower(line.substr(timeOfLogLine(line).size()));
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  // A trace that is left tells how it went; one that is entered tells nothing yet. Both come behind the
  // blanks of their depth.
  static const std::regex kTrace(R"(^ *(?:pid=\w+ )?(?:tid=\w+ )?\w+ +([+-]))");
  std::smatch trace;
  if (std::regex_search(lower, trace, kTrace)) {
    if (trace[1].str() == "+") return false;
    const std::size_t rc = lower.rfind(" rc=");
    return rc != std::string::npos && lower.substr(rc + 4) != "0";
  }
  const std::size_t rc = lower.find("rc=");
  if (rc != std::string::npos) {
    const std::size_t end = lower.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789_", rc + 3);
    return lower.substr(rc + 3, end == std::string::npos ? end : end - rc - 3) != "0";
  }
  return std::any_of(kErrorWords.begin(), kErrorWords.end(),
                     [&](const char* word) { return lower.find(word) != std::string::npos; });
}

}  // namespace qvn::cli
