// A log of every packet and ESC command, one line of JSON each, for whoever tests against the device.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string_view>

#include "bytes.h"

namespace sim {

class Trace {
 public:
  // An empty path writes nothing.
  explicit Trace(const std::filesystem::path& file);

  // The connections of each port have numbers of their own; the bidi port has no name.
  void received(std::uint64_t connection, ByteView packet, std::string_view port = {}) {
    write(connection, "received", packet, port);
  }
  void sent(std::uint64_t connection, ByteView packet, std::string_view port = {}) {
    write(connection, "sent", packet, port);
  }

 private:
  void write(std::uint64_t connection, const char* direction, ByteView packet, std::string_view port);

  std::ofstream out_;
};

}  // namespace sim
