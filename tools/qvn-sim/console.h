// Commands on standard input; each is answered by one line of JSON on standard output.
#pragma once

#include <string>
#include <string_view>

#include "bidi_port.h"
#include "event_loop.h"
#include "fault_switches.h"
#include "printer.h"

namespace sim {

class Console {
 public:
  Console(EventLoop& loop, FaultSwitches& faults, Printer& printer, BidiPort& bidi, bool quitAtEnd);

 private:
  void readInput();
  // Throws std::invalid_argument with a sentence for the user.
  void run(std::string_view line);

  EventLoop& loop_;
  FaultSwitches& faults_;
  Printer& printer_;
  BidiPort& bidi_;
  const bool quitAtEnd_;
  std::string pending_;
};

// Writes one line to standard output at once.
void printLine(const std::string& line);

}  // namespace sim
