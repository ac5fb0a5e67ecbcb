// The attributes of devices by name.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace qvn::cli {

// Every descriptor that the library defines, identity first.
std::span<const std::string_view> attributeDescriptors();

// The name in a descriptor.
std::string attributeName(std::string_view descriptor);

// The descriptor for a name, or the key itself when it is a descriptor already. Throws UsageError for a name
// that does not exist.
std::string findDescriptor(const std::string& key);

}  // namespace qvn::cli
