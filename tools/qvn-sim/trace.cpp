#include "trace.h"

#include <stdexcept>

namespace sim {

Trace::Trace(const std::filesystem::path& file) {
  if (file.empty()) return;
  out_.open(file, std::ios::trunc);
  if (!out_) throw std::runtime_error("cannot write " + file.string());
}

void Trace::write(std::uint64_t connection, const char* direction, ByteView packet, std::string_view port) {
  if (!out_.is_open()) return;
  out_ << '{';
  if (!port.empty()) out_ << "\"port\":\"" << port << "\",";
  out_ << "\"connection\":" << connection << ",\"" << direction << "\":\"" << toHex(packet) << "\"}\n"
       << std::flush;
}

}  // namespace sim
