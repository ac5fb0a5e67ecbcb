// A file that several processes append to.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/base/access.h"
#include "platform/base/error.h"

namespace qvn::platform {

class QVN_PLATFORM_API File {
 public:
  enum class Open { Existing, CreateIfMissing };

  // Opens a file named in the vocabulary of nativePath (paths.h) for reading and writing, shared with other
  // processes. Null on failure, with `error` set.
  static std::unique_ptr<File> open(const std::string& path, Open how, Access access, ErrorCode& error);
  virtual ~File();

  virtual ErrorCode seekToEnd() = 0;

  // Writes all of `bytes`, or none and answers why not.
  virtual ErrorCode write(std::string_view bytes) = 0;
};

QVN_PLATFORM_API ErrorCode deleteFile(const std::string& path);

}  // namespace qvn::platform
