// A file that is written beside its name and gets it only when it is complete. What is no file, such as a
// device or a named pipe, is written to directly, and so is standard output, whose name is "-".
#pragma once

#include <cstdio>
#include <string>

namespace qvn::cli {

class OutputFile {
 public:
  // Throws Failure when it cannot be written.
  explicit OutputFile(const std::string& name);
  // Leaves nothing behind of a file that was not kept.
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  const std::string& name() const { return name_; }
  std::FILE* stream() { return stream_; }
  // Whether one can go back in it and read.
  bool seekable() const;

  // The file is complete: brings it to the disk and gives it its name. Throws Failure, and then it is not
  // kept.
  void keep();

  // The failure of writing it, with the reason of that errno value.
  [[noreturn]] void fail(int error) const;

 private:
  std::string name_;
  std::string target_;   // the file that the name stands for
  std::string partial_;  // where it is written; empty when that is the target
  std::FILE* stream_ = nullptr;
};

// Throws Failure when the place of the file has less room than that many bytes.
void requireRoom(const std::string& name, std::uint64_t bytes);

}  // namespace qvn::cli
