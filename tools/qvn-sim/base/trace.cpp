#include "base/trace.h"

#include <stdexcept>
#include <string>
#include <vector>

#include "base/json_line.h"

namespace sim {

Trace::Trace(const std::filesystem::path& file) {
  if (file.empty()) return;
  out_.open(file, std::ios::trunc);
  if (!out_) throw std::runtime_error("cannot write " + file.string());
}

void Trace::write(std::uint64_t connection, const char* direction, std::string_view what,
                  std::string_view port) {
  std::vector<JsonField> line;
  if (!port.empty()) line.emplace_back("port", std::string(port));
  line.emplace_back("connection", connection);
  line.emplace_back(direction, std::string(what));
  out_ << jsonLine(line) << '\n' << std::flush;
}

}  // namespace sim
