#include "base/json_line.h"

#include <nlohmann/json.hpp>

namespace sim {

std::string jsonLine(const std::vector<JsonField>& fields) {
  nlohmann::ordered_json object = nlohmann::ordered_json::object();
  for (const auto& [name, value] : fields) {
    std::visit([&, key = name](const auto& plain) { object[key] = plain; }, value);
  }
  return object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace sim
