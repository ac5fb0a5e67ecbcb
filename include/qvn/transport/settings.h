// The settings that a transport reads: values below the library's root in the registry. Any thread; nothing
// is kept from one call to the next.
#pragma once

#include <cstdint>
#include <string>

namespace qvn {

// The library's own root: what the keys of settings are relative to.
inline constexpr char kLibraryRegistryRoot[] = "Software\\Quorin Tools\\Qvn\\Local\\qr__\\";

// The DWORD of that name under the key, for example ("Ip1\\Settings\\", "ReadTimeout", 30000). An absent one
// is written with its default, so that an administrator finds it to change; nothing is written while the
// library's root does not exist. A value of another type, or one that cannot be read, gives the default.
std::uint32_t transportSetting(const char* key, const char* name, std::uint32_t defaultValue);

// The same for a text.
std::string transportTextSetting(const char* key, const char* name, const std::string& defaultValue);

// Writes a text, and makes its key where it is missing. 0, 2 while the library's root does not exist, or the
// registry's code.
std::uint32_t setTransportTextSetting(const char* key, const char* name, const std::string& value);

}  // namespace qvn
