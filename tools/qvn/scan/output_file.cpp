#include "scan/output_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>

#include "shared/client/failure.h"
#include "shared/client/standard_output.h"

namespace qvn::cli {

namespace {

namespace fs = std::filesystem;

constexpr char kStandardOutput[] = "-";

// A name beside the target that no file has. None when the directory takes no file; errno tells why.
int createBeside(const fs::path& target, std::string& created) {
  for (int attempt = 0;; ++attempt) {
    const fs::path beside = target.parent_path() / ("." + target.filename().string() + "." +
                                                    std::to_string(getpid() + attempt) + ".part");
    const int descriptor = open(beside.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor >= 0) created = beside.string();
    if (descriptor >= 0 || errno != EEXIST) return descriptor;
  }
}

}  // namespace

OutputFile::OutputFile(const std::string& name) : name_(name), target_(name) {
  int descriptor = -1;
  if (name == kStandardOutput) {
    name_ = "standard output";
    descriptor = dup(standardOutput());
  } else {
    std::error_code ignored;
    // A link stays a link.
    if (fs::is_symlink(name, ignored)) target_ = fs::weakly_canonical(name, ignored).string();
    const fs::file_status status = fs::status(target_, ignored);
    if (fs::is_directory(status)) {
      fail(EISDIR);
    } else if (!fs::exists(status) || fs::is_regular_file(status)) {
      descriptor = createBeside(target_, partial_);
    } else {
      descriptor = open(target_.c_str(), O_WRONLY | O_CLOEXEC);
    }
  }
  if (descriptor < 0) fail(errno);
  stream_ = fdopen(descriptor, partial_.empty() ? "wb" : "w+b");
  if (stream_ == nullptr) fail(errno);
}

OutputFile::~OutputFile() {
  if (stream_ != nullptr) std::fclose(stream_);
  if (!partial_.empty()) unlink(partial_.c_str());
}

bool OutputFile::seekable() const { return lseek(fileno(stream_), 0, SEEK_CUR) >= 0; }

void OutputFile::keep() {
  const bool written = std::fflush(stream_) == 0 && (partial_.empty() || fsync(fileno(stream_)) == 0);
  int error = errno;
  const bool closed = std::fclose(stream_) == 0;
  if (written) error = errno;
  stream_ = nullptr;
  if (!written || !closed) fail(error);
  if (!partial_.empty()) {
    if (rename(partial_.c_str(), target_.c_str()) != 0) fail(errno);
    partial_.clear();
  }
}

void OutputFile::fail(int error) const {
  throw Failure("cannot write '" + name_ + "': " + std::strerror(error));
}

void requireRoom(const std::string& name, std::uint64_t bytes) {
  std::error_code error;
  const fs::path directory = fs::absolute(name).parent_path();
  const fs::space_info space = fs::space(directory, error);
  if (!error && space.available < bytes) {
    throw Failure("there is no room for '" + name + "': it needs at least " + std::to_string(bytes) +
                  " bytes, " + std::to_string(space.available) + " are free");
  }
}

}  // namespace qvn::cli
