// EscCommand: a command of the ESC set. Its bytes are the command, header and payload.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "qvn/transport/data.h"
#include "qvn/transport/esc_command_table.h"
#include "scanner/esc/comparable_data.h"

namespace qvn {

// The operations here are those of a command that nothing is known of.
class EscCommand : public ComparableData {
 public:
  // Whether the data answers this command.
  virtual bool isResponse(const Data& data) const;
  // Whether the device answers this command at all.
  virtual bool expectsResponse() const;
  // Whether the data is a command of this class.
  virtual bool isA(const Data& data) const;
  // The name of the class.
  virtual std::string getName() const;

  // Of the same class, with the same bytes.
  virtual bool equals(const EscCommand& other) const;
  virtual bool isResponse(const EscCommand& other) const;

  virtual std::uint32_t getPayloadLength() const;
  virtual std::uint32_t getHeaderLength() const;

  // A command of this class: that of the data, null when the data is none; or one with the bytes of the
  // template.
  virtual std::unique_ptr<EscCommand> create(const Data& data) const;
  virtual std::unique_ptr<EscCommand> create() const;

  // Appends as much of what has arrived as this command still lacks. True when that was something: the
  // count of `incoming` then is how many bytes, and its result code 0; its content stays.
  virtual bool takeFrom(Data& incoming);

  using ComparableData::equals;

 protected:
  EscCommand() = default;
  explicit EscCommand(const Data& data) : ComparableData(data) {}

  // Throws Win32Exception 87 with the message: a constructor was given data that is no command of its class.
  [[noreturn]] static void refuse(const std::string& message);
};

}  // namespace qvn
