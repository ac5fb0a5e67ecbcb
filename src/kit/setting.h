// How a setting is read, by the library's SettingsStore and by transports.
#pragma once

#include <string>

#include "platform/registry/registry.h"

namespace qvn {

// The value of that type at `path`, a key that is made when it is not there. `data` holds the default, which
// an absent value is written with, so that an administrator finds it to change; but nothing is written while
// the key `root` does not exist: installation makes it. False, `data` as it was and the thread's last error
// set, on a failure of the registry, with 0 when the value is of another type.
bool readSetting(const std::string& root, const std::string& path, const std::string& name,
                 platform::registry::ValueType type, std::string& data);

}  // namespace qvn
