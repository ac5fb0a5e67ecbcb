#include "script.h"

#include <chrono>
#include <fstream>
#include <iostream>
#include <limits>
#include <stdexcept>
#include <string_view>

namespace sim {
namespace {

constexpr std::string_view kWait = "wait ";

}  // namespace

Script::Script(EventLoop& loop, CommandInterpreter& commands, const std::filesystem::path& file)
    : loop_(loop), commands_(commands), name_(file.string()) {
  if (file.empty()) return;
  std::ifstream in(file);
  for (std::string line; std::getline(in, line);) lines_.push_back(line);
  if (!in.eof()) throw std::runtime_error("cannot read " + name_);
}

void Script::run() {
  while (next_ < lines_.size()) {
    const std::string& line = lines_[next_++];
    if (line.empty()) continue;
    try {
      if (line.starts_with(kWait)) {
        const std::uint32_t wait = parseNumber(std::string_view(line).substr(kWait.size()),
                                               std::numeric_limits<std::uint32_t>::max());
        loop_.after(std::chrono::milliseconds(wait), [this] { run(); });
        return;
      }
      commands_.run(line);
    } catch (const std::invalid_argument& error) {
      std::cerr << "qvn-sim: " << name_ << ':' << next_ << ": " << error.what() << '\n';
    }
  }
}

}  // namespace sim
