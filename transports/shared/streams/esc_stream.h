// The ESC commands in the byte stream of a device's scan port.
#pragma once

#include <optional>

#include "qvn/transport/esc_command_table.h"
#include "shared/streams/receive_buffer.h"

namespace qvn::shared {

class EscStream : public ReceiveBuffer {
 public:
  using Item = esc::Bytes;

  // The next whole command, in the buffer. Bytes that begin no command are skipped. After some were, image
  // data may look like a command: only one of the table's is taken for the next.
  std::optional<esc::Bytes> next();

  // Takes the command that has begun for garbage: its header is skipped.
  void giveUpPartial();

 private:
  bool inStep_ = true;  // what comes now begins where a command ended
};

}  // namespace qvn::shared
