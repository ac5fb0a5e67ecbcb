// Values in the registry below the library's own root, where no exported function reads or writes them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/settings/setting_table.h"
#include "platform/registry/registry.h"

namespace qvn::cli {

// The full path of a key given relative to the library's root.
std::string libraryKey(std::string_view key);

// The value, or none when the key or the value does not exist. Throws Failure when it cannot be read.
std::optional<platform::registry::Value> readLibraryValue(std::string_view key, std::string_view name);

// The number that the library goes by: the default where the value does not exist or is no number.
std::uint32_t numberSetting(const LongSetting& setting);

// Writes the value, making its key, and the library's root, where they are missing. Throws Failure.
void writeLibraryValue(std::string_view key, std::string_view name, const platform::registry::Value& value);

// Deletes the value; false when there was none. Throws Failure.
bool removeLibraryValue(std::string_view key, std::string_view name);

// Makes the key, and the library's root, where they are missing. Throws Failure.
platform::registry::Key makeLibraryKey(std::string_view key);

// All values of the key in the order they were first written; none when it does not exist.
std::vector<std::pair<std::string, platform::registry::Value>> listLibraryValues(std::string_view key);

}  // namespace qvn::cli
