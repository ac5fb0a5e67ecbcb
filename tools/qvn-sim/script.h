// The commands of a file, one a line, carried out one after another; "wait MS" lets time pass between them.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "command_interpreter.h"
#include "net/event_loop.h"

namespace sim {

class Script {
 public:
  // No path is no script. Throws std::runtime_error when the file cannot be read.
  Script(EventLoop& loop, CommandInterpreter& commands, const std::filesystem::path& file);

  // Carries out the next lines up to a wait, and comes again after it. A wrong line is told on standard error
  // and skipped.
  void run();

 private:
  EventLoop& loop_;
  CommandInterpreter& commands_;
  const std::string name_;
  std::vector<std::string> lines_;
  std::size_t next_ = 0;
};

}  // namespace sim
