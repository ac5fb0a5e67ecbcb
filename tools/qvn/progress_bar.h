// The progress of one transfer on one line of a terminal: what is done, rate and time left.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace qvn::cli {

// What is counted.
enum class ProgressUnit { Bytes, Lines };

class ProgressBar {
 public:
  // Draws nothing unless `visible`. `total` is unknown for a pipe.
  ProgressBar(std::string label, std::optional<std::uint64_t> total, bool visible,
              ProgressUnit unit = ProgressUnit::Bytes);
  // Clears the line.
  ~ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  // Redraws at most ten times a second.
  void update(std::uint64_t done);

  // Replaces the line by a word on what is waited for.
  void note(const std::string& text);

 private:
  std::string label_;
  std::optional<std::uint64_t> total_;
  bool visible_;
  ProgressUnit unit_;
  std::uint64_t started_;
  std::uint64_t drawn_ = 0;
};

// The line for a moment; apart from the terminal, for tests. `elapsed` in milliseconds.
std::string progressLine(const std::string& label, std::uint64_t done, std::optional<std::uint64_t> total,
                         std::uint64_t elapsed, ProgressUnit unit = ProgressUnit::Bytes);

// "512 B", "1.4 kB", "27.0 MB": powers of 1000.
std::string formatBytes(double bytes);

// True when standard error is a terminal.
bool standardErrorIsTerminal();

}  // namespace qvn::cli
