#include "report.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>

namespace qvn::cups {

namespace {

// A line that the scheduler has no place for must not end the job: what it does not take is dropped.
void writeAll(int descriptor, const std::string& text) {
  std::size_t at = 0;
  while (at < text.size()) {
    const ssize_t count = write(descriptor, text.data() + at, text.size() - at);
    if (count < 0 && errno != EINTR) return;
    if (count > 0) at += static_cast<std::size_t>(count);
  }
}

}  // namespace

Report::Report(int descriptor) : descriptor_(descriptor) {}

Report::~Report() {
  const std::set<std::string> told = reasons_;
  for (const std::string& reason : told) setReason(reason, false);
}

void Report::info(const std::string& sentence) {
  const std::lock_guard<std::mutex> lock(mutex_);
  line("INFO: ", sentence);
}

void Report::warning(const std::string& sentence) {
  const std::lock_guard<std::mutex> lock(mutex_);
  line("WARNING: ", sentence);
}

void Report::error(const std::string& sentence) {
  const std::lock_guard<std::mutex> lock(mutex_);
  line("ERROR: ", sentence);
}

void Report::debug(const std::string& sentence) {
  const std::lock_guard<std::mutex> lock(mutex_);
  line("DEBUG: ", sentence);
}

void Report::progress(int percent) {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (percent == percent_) return;
  percent_ = percent;
  line("ATTR: job-media-progress=", std::to_string(percent));
}

void Report::setReason(const std::string& reason, bool holds) {
  const std::lock_guard<std::mutex> lock(mutex_);
  const bool news = holds ? reasons_.insert(reason).second : reasons_.erase(reason) == 1;
  if (news) line(holds ? "STATE: +" : "STATE: -", reason);
}

void Report::forgetReasons(const std::vector<std::string>& reasons) {
  const std::lock_guard<std::mutex> lock(mutex_);
  std::string list;
  for (const std::string& reason : reasons) {
    if (!reasons_.contains(reason)) list += (list.empty() ? "" : ",") + reason;
  }
  if (!list.empty()) line("STATE: -", list);
}

// In one piece, so that no other thread's line gets into it; a line end inside would begin a line of its own.
void Report::line(const char* prefix, const std::string& text) {
  std::string whole = prefix + text;
  std::replace_if(
      whole.begin(), whole.end(), [](unsigned char byte) { return std::iscntrl(byte) != 0; }, ' ');
  writeAll(descriptor_, whole + "\n");
}

}  // namespace qvn::cups
