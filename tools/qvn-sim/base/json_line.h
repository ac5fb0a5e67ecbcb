// What the simulator says in JSON: flat objects, one line each.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace sim {

using JsonField = std::pair<const char*, std::variant<std::uint64_t, std::string>>;

// Fields in their order, without the end of line; bytes that are not UTF-8 become the replacement character.
std::string jsonLine(const std::vector<JsonField>& fields);

}  // namespace sim
