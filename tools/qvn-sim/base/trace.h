// A log of every packet, ESC command and document, one line of JSON each, for whoever tests against the
// device.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string_view>

#include "base/bytes.h"

namespace sim {

class Trace {
 public:
  // An empty path writes nothing.
  explicit Trace(const std::filesystem::path& file);

  // The connections of each port have numbers of their own; the bidi port has no name. Bytes are written in
  // hexadecimal, texts as they are.
  void received(std::uint64_t connection, ByteView packet, std::string_view port = {}) {
    if (out_.is_open()) write(connection, "received", toHex(packet), port);
  }
  void sent(std::uint64_t connection, ByteView packet, std::string_view port = {}) {
    if (out_.is_open()) write(connection, "sent", toHex(packet), port);
  }
  void receivedText(std::uint64_t connection, std::string_view text, std::string_view port) {
    if (out_.is_open()) write(connection, "received", text, port);
  }
  void sentText(std::uint64_t connection, std::string_view text, std::string_view port) {
    if (out_.is_open()) write(connection, "sent", text, port);
  }

 private:
  void write(std::uint64_t connection, const char* direction, std::string_view what, std::string_view port);

  std::ofstream out_;
};

}  // namespace sim
