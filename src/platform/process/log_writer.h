// The log of this process's library, for the modules that it loads: they see no other symbol of it.
#pragma once

#include <cstdint>
#include <string>

#include "platform/base/export.h"

namespace qvn::platform {

// Any thread; neither throws.
struct LogWriter {
  bool (*isWanted)(const char* component, std::uint32_t level);
  void (*write)(const char* component, std::uint32_t level, const std::string& text);
};

// Null while no library is initialised. A library that has one takes it away before it goes, when no thread
// of a module runs any more.
QVN_PLATFORM_API void setLogWriter(const LogWriter* writer);
QVN_PLATFORM_API const LogWriter* logWriter();

}  // namespace qvn::platform
