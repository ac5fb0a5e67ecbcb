#include "platform/files/file_lock.h"

#include <sys/file.h>

#include <cerrno>

namespace qvn::platform {

bool lockFile(int descriptor, int operation) {
  int result = 0;
  do {
    result = flock(descriptor, operation);
  } while (result != 0 && errno == EINTR);
  return result == 0;
}

}  // namespace qvn::platform
