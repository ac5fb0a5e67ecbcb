#include "console.h"

#include <unistd.h>

#include <cerrno>
#include <iostream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>

namespace sim {
namespace {

constexpr std::size_t kLongestLine = 65536;

Bytes hexOrThrow(const std::string& text) {
  const auto bytes = fromHex(text);
  if (!bytes || bytes->empty()) throw std::invalid_argument("expected pairs of hexadecimal digits");
  return *bytes;
}

}  // namespace

Console::Console(EventLoop& loop, FaultSwitches& faults, Printer& printer, BidiPort& bidi, bool quitAtEnd)
    : loop_(loop), faults_(faults), printer_(printer), bidi_(bidi), quitAtEnd_(quitAtEnd) {
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
      run(line);
      printLine(R"({"ok":true})");
    } catch (const std::invalid_argument& error) {
      printLine(nlohmann::json{{"error", error.what()}}.dump(-1, ' ', false,
                                                             nlohmann::json::error_handler_t::replace));
    }
  }
  if (pending_.size() > kLongestLine) pending_.clear();
}

void Console::run(std::string_view line) {
  const std::size_t blank = line.find(' ');
  const std::string_view command = line.substr(0, blank);
  const std::string argument(blank == std::string_view::npos ? std::string_view() : line.substr(blank + 1));
  if (command == "quit") {
    loop_.stop();
  } else if (command == "alert") {
    const Bytes alert = hexOrThrow(argument);
    bidi_.alert(alert);
  } else if (command == "send") {
    bidi_.sendToAll(hexOrThrow(argument));
  } else if (command == "status") {
    std::istringstream numbers(argument);
    numbers.unsetf(std::ios::basefield);  // 0x4000 as well
    unsigned busy = 0;
    unsigned status = 0;
    numbers >> busy;
    if (!numbers || busy > 0xFF) throw std::invalid_argument("expected a number from 0 to 255");
    numbers >> std::ws;
    if (!numbers.eof()) numbers >> status >> std::ws;
    if (!numbers.eof() || status > 0xFFFF)
      throw std::invalid_argument("expected a second number from 0 to 65535");
    bidi_.alert(printer_.setStatus(static_cast<std::uint8_t>(busy), static_cast<std::uint16_t>(status)));
  } else if (command == "power-on-reset") {
    bidi_.alert(printer_.reset());
  } else if (command == "fault") {
    faults_.add(argument);
  } else if (command == "clear-faults") {
    faults_.clear();
  } else {
    throw std::invalid_argument("unknown command");
  }
}

void printLine(const std::string& line) { std::cout << line << '\n' << std::flush; }

}  // namespace sim
