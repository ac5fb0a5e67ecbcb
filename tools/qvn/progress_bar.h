// The progress of one transfer on one line of a terminal: what is done, rate and time left, or what is waited
// for.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace qvn::cli {

// What is counted.
enum class ProgressUnit { Bytes, Lines };

// A moment of a transfer. Times in milliseconds.
struct Progress {
  std::string label;
  ProgressUnit unit = ProgressUnit::Bytes;
  // Unknown for a pipe.
  std::optional<std::uint64_t> total;
  std::uint64_t done = 0;
  // Since the beginning, and since anything was done last.
  std::uint64_t elapsed = 0;
  std::uint64_t idle = 0;
  // What is told of a transfer that stands still.
  std::string stalled;
};

// The line for a moment, in so many columns.
std::string progressLine(const Progress& progress, std::size_t columns);

// Draws the line again and again, ten times a second, on a thread of its own, so that it is true while an
// operation waits.
class ProgressBar {
 public:
  // Draws nothing unless `visible`.
  ProgressBar(std::string label, std::optional<std::uint64_t> total, bool visible, std::string stalled,
              ProgressUnit unit = ProgressUnit::Bytes);
  // Clears the line, for the messages that follow.
  ~ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  void update(std::uint64_t done);

  // From here on the line says what is waited for, and for how long by now.
  void note(const std::string& text);

 private:
  void draw();

  std::mutex mutex_;
  std::condition_variable changed_;
  bool ended_ = false;
  Progress progress_;
  std::string note_;
  // Of the platform's clock.
  const std::uint64_t started_;
  std::uint64_t moved_;
  std::thread drawing_;
};

// "512 B", "1.4 kB", "27.0 MB": powers of 1000.
std::string formatBytes(double bytes);

bool standardErrorIsTerminal();
bool standardInputIsTerminal();

}  // namespace qvn::cli
