#include "scanner/esc/table_esc_command.h"

#include <algorithm>

#include "qvn/result_codes.h"

namespace qvn {

TableEscCommand::TableEscCommand(const esc::Command& row) : row_(row) {
  append(row.header.data(), static_cast<std::uint32_t>(row.header.size()));
}

TableEscCommand::TableEscCommand(const esc::Command& row, const Data& data) : EscCommand(data), row_(row) {
  if (TableEscCommand::isA(data)) return;
  const std::string name = row.name;
  refuse(name + "(const Data&): data does not contain a " + name + ".");
}

bool TableEscCommand::isResponse(const Data& data) const {
  return expectsResponse() && esc::beginsWith(bytesOf(data), row_.reply);
}

bool TableEscCommand::expectsResponse() const { return row_.reply.length != 0; }

bool TableEscCommand::isA(const Data& data) const { return esc::isA(bytesOf(data), row_); }

std::string TableEscCommand::getName() const { return row_.name; }

bool TableEscCommand::isResponse(const EscCommand& other) const {
  return expectsResponse() && other.getName() == row_.replyName;
}

std::uint32_t TableEscCommand::getPayloadLength() const {
  return static_cast<std::uint32_t>(esc::payloadLength(bytesOf(*this), row_.payloadField));
}

bool TableEscCommand::takeFrom(Data& incoming) {
  if (!row_.comesInPieces) return false;
  const std::uint32_t whole = getHeaderLength() + getPayloadLength();
  if (getLength() >= whole) return false;
  const std::uint32_t taken = std::min(whole - getLength(), incoming.getLength());
  append(bytesOf(incoming).data(), taken);
  incoming.setCount(taken);
  incoming.setRc(QRN_ERROR_SUCCESS);
  return true;
}

}  // namespace qvn
