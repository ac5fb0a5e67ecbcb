// Keeps SIGXFSZ, which would end the process, from a write that meets the process's file size limit: the
// write then fails with EFBIG like one that meets a full disk.
#pragma once

#include <signal.h>

namespace qvn::platform {

class FileSizeSignalBlock {
 public:
  FileSizeSignalBlock();
  ~FileSizeSignalBlock();
  FileSizeSignalBlock(const FileSizeSignalBlock&) = delete;
  FileSizeSignalBlock& operator=(const FileSizeSignalBlock&) = delete;

 private:
  sigset_t previous_;
};

}  // namespace qvn::platform
