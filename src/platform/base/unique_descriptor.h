// Owns a file descriptor.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace qvn::platform {

class UniqueDescriptor {
 public:
  UniqueDescriptor() = default;
  // Takes what open() gave; negative is none.
  explicit UniqueDescriptor(int descriptor) : descriptor_(descriptor) {}
  UniqueDescriptor(UniqueDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  UniqueDescriptor& operator=(UniqueDescriptor&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  // Leaves errno alone: it may be about to be asked for.
  ~UniqueDescriptor() {
    if (descriptor_ < 0) return;
    const int error = errno;
    close(descriptor_);
    errno = error;
  }

  explicit operator bool() const { return descriptor_ >= 0; }
  int get() const { return descriptor_; }

 private:
  int descriptor_ = -1;
};

}  // namespace qvn::platform
