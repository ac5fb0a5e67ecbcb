#include "platform/files/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platform/base/failure.h"
#include "platform/base/unique_descriptor.h"
#include "platform/files/file_size_signal.h"
#include "platform/files/paths.h"
#include "platform/files/state_directory.h"
#include "platform/files/state_file.h"

namespace qvn::platform {
namespace {

class NativeFile final : public File {
 public:
  explicit NativeFile(UniqueDescriptor descriptor) : descriptor_(std::move(descriptor)) {}

  ErrorCode seekToEnd() override {
    return lseek(descriptor_.get(), 0, SEEK_END) < 0 ? failWithErrno() : kSuccess;
  }

  ErrorCode write(std::string_view bytes) override {
    const FileSizeSignalBlock block;
    const off_t begin = lseek(descriptor_.get(), 0, SEEK_CUR);
    while (!bytes.empty()) {
      const ssize_t written = ::write(descriptor_.get(), bytes.data(), bytes.size());
      if (written < 0 && errno == EINTR) continue;
      if (written < 0) return takeBack(begin);
      bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return kSuccess;
  }

 private:
  // Ends a write that failed half-way: what a full disk did take is no line.
  ErrorCode takeBack(off_t begin) {
    const ErrorCode error = failWithErrno();
    if (begin >= 0 && ftruncate(descriptor_.get(), begin) == 0) lseek(descriptor_.get(), begin, SEEK_SET);
    return error;
  }

  UniqueDescriptor descriptor_;
};

UniqueDescriptor openNative(const std::filesystem::path& path, File::Open how, Access access) {
  while (true) {
    UniqueDescriptor existing = openStateFile(path, O_RDWR);
    if (existing || errno != ENOENT || how == File::Open::Existing) return existing;
    UniqueDescriptor made = openStateFile(path, O_RDWR | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR);
    if (made) {
      // Not left to the process's umask: another account must be able to append.
      if (fchmod(made.get(), fileMode(access)) != 0) return {};
      return made;
    }
    if (errno != EEXIST) return made;
  }
}

}  // namespace

File::~File() = default;

std::unique_ptr<File> File::open(const std::string& path, Open how, Access access, ErrorCode& error) {
  const std::filesystem::path native = nativePath(path);
  if (native.empty()) {
    error = lastError();
    return nullptr;
  }
  UniqueDescriptor descriptor = openNative(native, how, access);
  if (!descriptor) {
    error = failWithErrno();
    return nullptr;
  }
  error = kSuccess;
  return std::make_unique<NativeFile>(std::move(descriptor));
}

ErrorCode deleteFile(const std::string& path) {
  const std::filesystem::path native = nativePath(path);
  if (native.empty()) return lastError();
  return fail(errorFromErrno(removeStateFile(native)));
}

}  // namespace qvn::platform
