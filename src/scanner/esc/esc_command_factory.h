// EscCommandFactory: tells which ESC command some data is.
#pragma once

#include <memory>
#include <vector>

#include "qvn/transport/critical_section.h"
#include "qvn/transport/data.h"
#include "scanner/esc/esc_command.h"
#include "scanner/esc/null_esc_command.h"

namespace qvn {

// One per process, made on first use, there until the library is unloaded. The commands of the table are
// registered in its order, which decides between those that begin alike.
class EscCommandFactory {
 public:
  EscCommandFactory(const EscCommandFactory&) = delete;
  EscCommandFactory& operator=(const EscCommandFactory&) = delete;

  static EscCommandFactory& getInstance();

  // A command of the first registered class that recognises the data, of StandardEscCommand for another ESC
  // command, of NullEscCommand for anything else. Never null. Not while another thread registers.
  std::unique_ptr<EscCommand> makeCommand(const Data& data) const;

  // Adds a class, by an object of it; nothing happens when there is one of its name.
  void registerCommand(const EscCommand& prototype);

 private:
  EscCommandFactory();

  CriticalSection lock_;
  std::vector<std::unique_ptr<EscCommand>> prototypes_;
  NullEscCommand null_;
};

}  // namespace qvn
