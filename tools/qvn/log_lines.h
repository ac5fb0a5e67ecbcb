// What the lines of the library's log tell: when they were written, and whether they are of an error.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace qvn::cli {

// The local time that a line begins with, "2026/11/26-10:00:00.000"; such texts compare as the times do.
// Empty when it begins with none, as the rest of an entry that has line breaks in it.
std::string_view timeOfLogLine(std::string_view line);

// The same form of a moment that a person names: so many seconds, minutes, hours or days ago (30s, 10m, 2h,
// 7d), a time of today (10:00, 10:00:30), a day (2026-11-26), or both with a blank. Throws UsageError.
std::string logTimeOf(const std::string& text, std::chrono::system_clock::time_point now);

// Whether the line is of an operation that failed. Lines do not carry the level they were written at: it goes
// by the result that ends a trace, and by the words that messages of errors have in them.
bool tellsError(std::string_view line);

}  // namespace qvn::cli
