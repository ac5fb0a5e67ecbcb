// Events that have come and are not printed yet: callbacks put them in, the command prints them.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "shared/client/output.h"

namespace qvn::cli {

class EventQueue {
 public:
  void add(Json event);

  // Prints `count` events, or without end for 0, as they come; while none comes, calls `idle` every few
  // seconds. Throws Interrupted when Ctrl-C ends that; returns early when standard output takes no more.
  // Interrupt::install() has been called.
  void print(
      std::size_t count, const std::function<void(const Json&)>& printOne,
      const std::function<void()>& idle = [] {});

 private:
  // The next event; none when it was stopped.
  std::optional<Json> next(const std::function<void()>& idle);
  void stop();

  // A reader who stopped reading must not let the memory grow.
  static constexpr std::size_t kMost = 10000;

  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Json> waiting_;
  bool lost_ = false;
  bool stopped_ = false;
};

// UTC with milliseconds, as RFC 3339 writes it.
std::string timeOfEvent();

}  // namespace qvn::cli
