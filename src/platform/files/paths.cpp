#include "platform/files/paths.h"

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <mutex>

#include "platform/base/access.h"
#include "platform/base/failure.h"
#include "platform/base/unique_descriptor.h"
#include "platform/files/state_directory.h"

namespace qvn::platform {
namespace {

constexpr const char* kGroup = "qvn";
// The group may add files, and nobody may take away or rename another one's.
constexpr mode_t kSharedMode = S_ISGID | S_ISVTX | S_IRWXU | S_IRWXG;
constexpr std::string_view kSeparators = "\\/";
constexpr const char* kWindowsDirectory = "c:\\windows";
constexpr const char* kSystemDirectory = "c:\\windows\\system32";

const char* environment(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr && *value != '\0' ? value : nullptr;
}

std::filesystem::path homeDirectory() {
  if (const char* home = environment("HOME")) return home;
  std::array<char, 4096> buffer;
  passwd entry{};
  passwd* found = nullptr;
  if (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr) {
    return found->pw_dir;
  }
  return {};
}

std::filesystem::path chooseStateDirectory() {
  if (const char* home = environment("QVN_HOME")) return home;
  if (geteuid() == 0) return "/var/lib/qvn";
  if (const char* state = environment("XDG_STATE_HOME")) return std::filesystem::path(state) / "qvn";
  const std::filesystem::path home = homeDirectory();
  return home.empty() ? home : home / ".local" / "state" / "qvn";
}

ErrorCode prepareStateDirectory(std::filesystem::path& directory) {
  std::error_code error;
  directory = chooseStateDirectory();
  if (directory.empty()) return kPathNotFound;
  directory = std::filesystem::absolute(directory, error).lexically_normal();
  if (error) return errorFromErrno(error.value());
  if (!directory.has_filename()) directory = directory.parent_path();  // It ended in a slash.
  std::filesystem::create_directories(directory.parent_path(), error);
  if (error) return errorFromErrno(error.value());
  // Whoever chose it may have chosen a link.
  directory = std::filesystem::weakly_canonical(directory, error);
  if (error) return errorFromErrno(error.value());
  return makeStateDirectory(directory);
}

// Opens a directory of root's to the group of the accounts that print; 0 or an errno value.
int shareWithGroup(const std::filesystem::path& directory) {
  std::array<char, 4096> buffer;
  group entry{};
  group* found = nullptr;
  // Changing the group clears the set-group-id bit: the group comes first.
  if (getgrnam_r(kGroup, &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr &&
      chown(directory.c_str(), static_cast<uid_t>(-1), found->gr_gid) != 0) {
    return errno;
  }
  return chmod(directory.c_str(), kSharedMode) != 0 ? errno : 0;
}

// A link to one is none.
bool isDirectory(const std::filesystem::path& path) {
  std::error_code error;
  return std::filesystem::is_directory(std::filesystem::symlink_status(path, error));
}

// A directory that root once shared without the sticky bit gets it.
ErrorCode protectEntries(const std::filesystem::path& directory) {
  const UniqueDescriptor opened(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  struct stat status {};
  if (geteuid() != 0 || !opened || fstat(opened.get(), &status) != 0) return kSuccess;
  const bool isShared = status.st_uid == 0 && (status.st_mode & (S_IWGRP | S_IWOTH)) != 0;
  if (!isShared || (status.st_mode & S_ISVTX) != 0) return kSuccess;
  return fchmod(opened.get(), (status.st_mode & ALLPERMS) | S_ISVTX) != 0 ? errorFromErrno(errno) : kSuccess;
}

// The component with every byte that a file name cannot hold replaced.
std::string fileName(std::string_view component) {
  std::string name(component);
  std::replace(name.begin(), name.end(), '\0', '_');
  return name;
}

ErrorCode existingDirectory(const char* directory, std::string& path) {
  const std::filesystem::path root = stateDirectory();
  if (root.empty()) return lastError();
  const std::filesystem::path native = nativePath(directory);
  std::filesystem::path made = root;
  for (const auto& component : native.lexically_relative(root)) {
    made /= component;
    if (const ErrorCode error = makeStateDirectory(made); error != kSuccess) return fail(error);
  }
  path = directory;
  return kSuccess;
}

}  // namespace

ErrorCode makeStateDirectory(const std::filesystem::path& directory) {
  if (isDirectory(directory)) return protectEntries(directory);
  // Made under another name: nobody meets it before it has its group and mode.
  std::string made = directory.string() + ".new-XXXXXX";
  if (mkdtemp(made.data()) == nullptr) return errorFromErrno(errno);
  int failure = geteuid() == 0 ? shareWithGroup(made) : 0;
  if (failure == 0 && renameat2(AT_FDCWD, made.c_str(), AT_FDCWD, directory.c_str(), RENAME_NOREPLACE) != 0) {
    failure = errno;
  }
  if (failure == 0) return kSuccess;
  rmdir(made.c_str());
  if (failure != EEXIST) return errorFromErrno(failure);
  return isDirectory(directory) ? kSuccess : kPathNotFound;
}

mode_t fileMode(Access access) {
  constexpr mode_t kOwner = S_IRUSR | S_IWUSR;
  constexpr mode_t kOthers = S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
  return access.everyone ? kOwner | kOthers : kOwner;
}

std::filesystem::path stateDirectory() {
  static std::mutex mutex;
  static auto& directory = *new std::filesystem::path;  // Threads may still ask while the process ends.
  const std::lock_guard guard(mutex);
  if (directory.empty()) {
    std::filesystem::path prepared;
    const ErrorCode error = prepareStateDirectory(prepared);
    if (error != kSuccess) {
      setLastError(error);
      return {};
    }
    directory = prepared;
  }
  return directory;
}

std::filesystem::path nativePath(std::string_view path) {
  std::filesystem::path native = stateDirectory();
  if (native.empty()) return native;
  if (path.size() >= 2 && path[1] == ':') path.remove_prefix(2);
  while (!path.empty()) {
    const std::size_t end = std::min(path.find_first_of(kSeparators), path.size());
    const std::string_view component = path.substr(0, end);
    path.remove_prefix(std::min(end + 1, path.size()));
    if (component.empty() || component == "." || component == "..") continue;
    native /= fileName(component);
  }
  return native;
}

ErrorCode windowsDirectory(std::string& path) { return existingDirectory(kWindowsDirectory, path); }

ErrorCode systemDirectory(std::string& path) { return existingDirectory(kSystemDirectory, path); }

}  // namespace qvn::platform
