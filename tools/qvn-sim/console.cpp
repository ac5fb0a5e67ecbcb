#include "console.h"

#include <unistd.h>

#include <cerrno>
#include <iostream>
#include <stdexcept>

#include "base/json_line.h"

namespace sim {
namespace {

// Has room for the longest block in hexadecimal.
constexpr std::size_t kLongestLine = std::size_t{512} << 10;

}  // namespace

Console::Console(EventLoop& loop, CommandInterpreter& commands, bool quitAtEnd)
    : loop_(loop), commands_(commands), quitAtEnd_(quitAtEnd) {
  loop_.watch(STDIN_FILENO, [this] { readInput(); });
}

void Console::readInput() {
  char buffer[4096];
  const ssize_t got = read(STDIN_FILENO, buffer, sizeof buffer);
  if (got < 0 && (errno == EAGAIN || errno == EINTR)) return;
  if (got <= 0) {
    loop_.unwatch(STDIN_FILENO);
    if (quitAtEnd_) loop_.stop();
    return;
  }
  pending_.append(buffer, static_cast<std::size_t>(got));
  std::size_t end;
  while ((end = pending_.find('\n')) != std::string::npos) {
    const std::string line = pending_.substr(0, end);
    pending_.erase(0, end + 1);
    try {
      const std::string told = commands_.run(line);
      if (told.empty()) {
        printLine(R"({"ok":true})");
      } else if (isatty(STDOUT_FILENO) != 0) {
        std::cout << told << std::flush;
      } else {
        printLine(jsonLine({{"told", told}}));
      }
    } catch (const std::invalid_argument& error) {
      printLine(jsonLine({{"error", std::string(error.what())}}));
    }
  }
  if (pending_.size() > kLongestLine) pending_.clear();
}

void printLine(const std::string& line) { std::cout << line << '\n' << std::flush; }

}  // namespace sim
