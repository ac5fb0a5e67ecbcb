#include "shared/client/job_data.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "shared/client/failure.h"
#include "shared/client/interrupt.h"

namespace qvn::cli {

namespace {

constexpr std::size_t kBlockSize = 0x40000;  // 256 KiB

}  // namespace

JobData::JobData(ReadBytes read, bool endWithMarker)
    : read_(std::move(read)), endWithMarker_(endWithMarker) {}

std::string JobData::next() {
  std::string block = std::move(held_);
  held_.clear();
  while (!ended_ && block.size() < kBlockSize) {
    const std::size_t start = block.size();
    block.resize(kBlockSize);
    const std::size_t count = read_(block.data() + start, kBlockSize - start);
    block.resize(start + count);
    if (count == 0) {
      ended_ = true;
      if (endWithMarker_ && !block.ends_with(kEndOfJobMarker)) {
        block += kEndOfJobMarker;
      }
      endWithMarker_ = false;
      return block;
    }
    // A pipe's bytes go out as they come.
    if (block.size() > kEndOfJobMarker.size()) {
      break;
    }
  }
  if (endWithMarker_) {
    const std::size_t hold = std::min(block.size(), kEndOfJobMarker.size());
    held_ = block.substr(block.size() - hold);
    block.resize(block.size() - hold);
  }
  return block;
}

InputFile::InputFile(const std::string& name)
    : name_(name == "-" ? "standard input" : "'" + name + "'"),
      descriptor_(name == "-" ? dup(STDIN_FILENO) : open(name.c_str(), O_RDONLY | O_CLOEXEC)) {
  struct stat status = {};
  if (descriptor_ < 0 || fstat(descriptor_, &status) != 0) {
    throw Failure("cannot open " + name_ + ": " + std::strerror(errno));
  }
  if (S_ISDIR(status.st_mode)) {
    close(descriptor_);
    throw Failure("cannot print " + name_ + ": it is a directory");
  }
  if (S_ISREG(status.st_mode)) {
    size_ = static_cast<std::uint64_t>(status.st_size);
  }
}

InputFile::~InputFile() { close(descriptor_); }

std::size_t InputFile::read(char* buffer, std::size_t size) {
  while (!Interrupt::requested()) {
    if (!Interrupt::waitReadable(descriptor_, -1)) {
      continue;
    }
    const ssize_t count = ::read(descriptor_, buffer, size);
    if (count >= 0) {
      return static_cast<std::size_t>(count);
    }
    if (errno != EINTR && errno != EAGAIN) {
      throw Failure("cannot read " + name_ + ": " + std::strerror(errno));
    }
  }
  return 0;
}

}  // namespace qvn::cli
