#include "base/trace.h"

#include <nlohmann/json.hpp>
#include <stdexcept>

namespace sim {

Trace::Trace(const std::filesystem::path& file) {
  if (file.empty()) return;
  out_.open(file, std::ios::trunc);
  if (!out_) throw std::runtime_error("cannot write " + file.string());
}

void Trace::write(std::uint64_t connection, const char* direction, std::string_view what,
                  std::string_view port) {
  nlohmann::ordered_json line;
  if (!port.empty()) line["port"] = port;
  line["connection"] = connection;
  line[direction] = what;
  out_ << line.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << '\n' << std::flush;
}

}  // namespace sim
