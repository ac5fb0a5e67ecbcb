// A log of every packet, one line of JSON each, for whoever tests against the device.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>

#include "bytes.h"

namespace sim {

class Trace {
 public:
  // An empty path writes nothing.
  explicit Trace(const std::filesystem::path& file);

  void received(std::uint64_t connection, ByteView packet) { write(connection, "received", packet); }
  void sent(std::uint64_t connection, ByteView packet) { write(connection, "sent", packet); }

 private:
  void write(std::uint64_t connection, const char* direction, ByteView packet);

  std::ofstream out_;
};

}  // namespace sim
