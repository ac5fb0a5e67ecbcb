// TableEscCommand: a command whose class is a row of the table of ESC commands.
#pragma once

#include "qvn/transport/data.h"
#include "qvn/transport/esc_command_table.h"
#include "scanner/esc/esc_command.h"

namespace qvn {

class TableEscCommand : public EscCommand {
 public:
  bool isResponse(const Data& data) const override;
  bool expectsResponse() const override;
  bool isA(const Data& data) const override;
  std::string getName() const override;
  bool isResponse(const EscCommand& other) const override;
  std::uint32_t getPayloadLength() const override;
  bool takeFrom(Data& incoming) override;

  // The 8 bytes of a command without parameters.
  esc::Bytes headerTemplate() const { return row_.header; }
  // How a reply begins; empty when there is none.
  esc::Bytes responsePrefix() const { return row_.reply.view(); }

 protected:
  // The bytes of the template.
  explicit TableEscCommand(const esc::Command& row);
  // The bytes of the data. Throws Win32Exception 87 when they are no command of the row.
  TableEscCommand(const esc::Command& row, const Data& data);

 private:
  const esc::Command& row_;
};

}  // namespace qvn
