// Where the system's files lie.
//
// There is one state directory: QVN_HOME when set, else /var/lib/qvn for root, else qvn below XDG_STATE_HOME
// (~/.local/state when that is unset). It holds the registry, the shared objects ("objects/"), the log, and
// the directories that stand for the drive the vocabulary of paths below speaks of.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "platform/base/error.h"

namespace qvn::platform {

// The state directory, created on first use (0700 for a user, 3770 for root, with the group qvn when that
// exists). Empty with the thread's last error set when it cannot be.
QVN_PLATFORM_API std::filesystem::path stateDirectory();

// The file for a path of the form "c:\dir\name": the state directory stands for the root of every drive. A
// path without a drive lies below the state directory too; no path leaves it.
QVN_PLATFORM_API std::filesystem::path nativePath(std::string_view path);

// The system's directories in the same vocabulary, without a trailing backslash: "c:\windows" and
// "c:\windows\system32". 0 or an error code.
QVN_PLATFORM_API ErrorCode windowsDirectory(std::string& path);
QVN_PLATFORM_API ErrorCode systemDirectory(std::string& path);

}  // namespace qvn::platform
