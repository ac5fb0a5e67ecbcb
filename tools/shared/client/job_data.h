// The bytes of one print job: a file or standard input in blocks, ended by the end-of-job marker where the
// printer wants one.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace qvn::cli {

// What the last data of a job on a Cpd printer ends with.
inline constexpr std::string_view kEndOfJobMarker("\x1B\x2A\x82\x00\x00\x00\x00\xAC", 8);

// Reads at most `size` bytes; 0 at the end.
using ReadBytes = std::function<std::size_t(char* buffer, std::size_t size)>;

class JobData {
 public:
  // With `endWithMarker` the job's data gets the marker unless it ends with it already.
  JobData(ReadBytes read, bool endWithMarker);

  // The next block, to be written in one piece; empty at the end of the job. The marker never straddles two
  // blocks: the printer looks for it at the end of a single write.
  std::string next();

 private:
  ReadBytes read_;
  bool endWithMarker_;
  std::string held_;  // read, but possibly the beginning of a marker that ends the data
  bool ended_ = false;
};

// A file open for reading; "-" is standard input. A request to stop (interrupt.h) ends a read that waits.
class InputFile {
 public:
  // Throws Failure when it cannot be opened or is a directory.
  explicit InputFile(const std::string& name);
  ~InputFile();
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  // Unknown for anything but a regular file.
  std::optional<std::uint64_t> size() const { return size_; }

  // 0 at the end, and once a stop is requested. Throws Failure.
  std::size_t read(char* buffer, std::size_t size);

 private:
  std::string name_;
  int descriptor_;
  std::optional<std::uint64_t> size_;
};

}  // namespace qvn::cli
