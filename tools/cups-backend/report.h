// What the backend tells the scheduler: lines on standard error, as the scheduler reads them. Any thread may
// tell.
#pragma once

#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace qvn::cups {

class Report {
 public:
  // `descriptor` is not closed.
  explicit Report(int descriptor);
  // Takes back the reasons that are still told: nobody watches the printer from now on.
  ~Report();
  Report(const Report&) = delete;
  Report& operator=(const Report&) = delete;

  void info(const std::string& sentence);
  void warning(const std::string& sentence);
  void error(const std::string& sentence);
  void debug(const std::string& sentence);

  // How much of the job the printer has been given, 0 to 100.
  void progress(int percent);

  // A printer-state-reason (RFC 8011) now holds, or no longer does; told when that is news.
  void setReason(const std::string& reason, bool holds);
  // Takes reasons back that this process has not told: one before it may have, and ended without notice.
  void forgetReasons(const std::vector<std::string>& reasons);

 private:
  void line(const char* prefix, const std::string& text);

  const int descriptor_;
  std::mutex mutex_;
  std::set<std::string> reasons_;
  int percent_ = -1;
};

}  // namespace qvn::cups
