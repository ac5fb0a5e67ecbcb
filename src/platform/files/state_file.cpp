#include "platform/files/state_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/files/paths.h"

namespace qvn::platform {

UniqueDescriptor openStateDirectory(const std::filesystem::path& directory) {
  constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
  const std::filesystem::path root = stateDirectory();
  UniqueDescriptor opened(open(root.c_str(), kFlags));
  for (const auto& component : directory.lexically_relative(root)) {
    if (!opened) break;
    if (component == ".") continue;
    if (component == "..") {
      errno = EACCES;
      return {};
    }
    opened = UniqueDescriptor(openat(opened.get(), component.c_str(), kFlags | O_NOFOLLOW));
  }
  return opened;
}

UniqueDescriptor openStateFile(const std::filesystem::path& path, int flags, mode_t mode) {
  const UniqueDescriptor directory = openStateDirectory(path.parent_path());
  if (!directory) return {};
  // Opening a pipe would wait for its other end.
  constexpr int kFlags = O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  UniqueDescriptor file(openat(directory.get(), path.filename().c_str(), flags | kFlags, mode));
  struct stat status {};
  if (!file || fstat(file.get(), &status) != 0) return {};
  if (S_ISREG(status.st_mode) && status.st_nlink <= 1) return file;
  errno = EACCES;
  return {};
}

int removeStateFile(const std::filesystem::path& path) {
  const UniqueDescriptor directory = openStateDirectory(path.parent_path());
  if (!directory || unlinkat(directory.get(), path.filename().c_str(), 0) != 0) return errno;
  return 0;
}

}  // namespace qvn::platform
