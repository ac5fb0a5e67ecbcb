// StandardEscCommand: an ESC command that is not in the table. Its own bytes say whether it wants a reply.
#pragma once

#include <array>

#include "qvn/transport/data.h"
#include "scanner/esc/esc_command.h"

namespace qvn {

class StandardEscCommand final : public EscCommand {
 public:
  // Throws Win32Exception 87 for less than 8 bytes and for what does not begin with the escape byte.
  explicit StandardEscCommand(const Data& data);

  bool isResponse(const Data& data) const override;
  bool expectsResponse() const override;
  bool isA(const Data& data) const override;
  std::string getName() const override;
  bool isResponse(const EscCommand& other) const override;
  std::uint32_t getPayloadLength() const override;
  std::unique_ptr<EscCommand> create(const Data& data) const override;
  using EscCommand::create;

 private:
  // Bytes 1 to 3, which a reply has too.
  std::array<std::uint8_t, 3> code_{};
};

}  // namespace qvn
