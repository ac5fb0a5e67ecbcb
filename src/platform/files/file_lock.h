// Locks between processes that end with the process that holds them.
#pragma once

namespace qvn::platform {

// flock(2), through signals. False with errno set.
bool lockFile(int descriptor, int operation);

}  // namespace qvn::platform
