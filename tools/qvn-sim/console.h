// Commands on standard input; each is answered by one line of JSON on standard output.
#pragma once

#include <string>

#include "command_interpreter.h"
#include "net/event_loop.h"

namespace sim {

class Console {
 public:
  Console(EventLoop& loop, CommandInterpreter& commands, bool quitAtEnd);

 private:
  void readInput();

  EventLoop& loop_;
  CommandInterpreter& commands_;
  const bool quitAtEnd_;
  std::string pending_;
};

// Writes one line to standard output at once.
void printLine(const std::string& line);

}  // namespace sim
