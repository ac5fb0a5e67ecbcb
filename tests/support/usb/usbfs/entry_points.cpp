// The calls of the C library that reach a mocked node. This library is searched before the C library's, so
// that these are found first; what is no mocked node goes on to the next definition.
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/ioctl.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "usbfs/opening.h"

namespace qvn::usbfs {

namespace {

class Openings {
 public:
  static Openings& instance() {
    static auto* openings = new Openings;  // programs close files after static objects are gone
    return *openings;
  }

  void add(std::shared_ptr<Opening> opening) {
    const std::lock_guard lock(mutex_);
    const int descriptor = opening->descriptor();
    openings_[descriptor] = std::move(opening);
    count_ = openings_.size();
  }

  std::shared_ptr<Opening> find(int descriptor) {
    if (count_ == 0) return nullptr;
    const std::lock_guard lock(mutex_);
    const auto found = openings_.find(descriptor);
    return found == openings_.end() ? nullptr : found->second;
  }

  std::shared_ptr<Opening> take(int descriptor) {
    if (count_ == 0) return nullptr;
    const std::lock_guard lock(mutex_);
    const auto node = openings_.extract(descriptor);
    count_ = openings_.size();
    return node.empty() ? nullptr : node.mapped();
  }

  std::vector<std::shared_ptr<Opening>> of(const std::string& file) {
    const std::lock_guard lock(mutex_);
    std::vector<std::shared_ptr<Opening>> found;
    for (const auto& [descriptor, opening] : openings_) {
      if (opening->file() == file) found.push_back(opening);
    }
    return found;
  }

 private:
  // The child of a fork has descriptors but none of the threads that serve them: there they are pipes, to be
  // closed.
  Openings() {
    pthread_atfork([] { instance().mutex_.lock(); }, [] { instance().mutex_.unlock(); },
                   [] {
                     new std::map(std::move(instance().openings_));
                     instance().openings_.clear();
                     instance().count_ = 0;
                     instance().mutex_.unlock();
                   });
  }

  std::mutex mutex_;
  std::atomic<std::size_t> count_{0};
  std::map<int, std::shared_ptr<Opening>> openings_;
};

template <typename Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

// usblp lets one open its node at a time. -1 with errno set, as open() gives.
int openPrinterNode(const char* path, int flags) {
  const int file = open(mockedFile(path).c_str(), (flags & ~O_CREAT) | O_CLOEXEC);
  if (file < 0) return -1;
  struct flock lock = {};
  lock.l_type = (flags & O_ACCMODE) == O_RDONLY ? F_RDLCK : F_WRLCK;
  lock.l_whence = SEEK_SET;
  if (fcntl(file, F_OFD_SETLK, &lock) == 0) return file;
  close(file);
  errno = EBUSY;
  return -1;
}

// Whether the path is of a mocked node, and then what opening it gives.
bool openMocked(const char* path, int flags, int& descriptor) {
  if (path == nullptr) return false;
  if (std::strncmp(path, "/dev/usb/lp", 11) == 0 && !mockedFile(path).empty()) {
    descriptor = openPrinterNode(path, flags);
    return true;
  }
  Node node;
  if (std::strncmp(path, "/dev/bus/usb/", 13) != 0 || !Node::read(path, node)) return false;
  std::shared_ptr<Opening> opening = Opening::make(node, flags);
  descriptor = opening == nullptr ? -1 : opening->descriptor();
  if (opening != nullptr) Openings::instance().add(std::move(opening));
  return true;
}

}  // namespace

void unplug(const std::string& file) {
  for (const auto& opening : Openings::instance().of(file)) opening->unplug();
}

}  // namespace qvn::usbfs

using qvn::usbfs::next;
using qvn::usbfs::Openings;

extern "C" {

QVN_USBFS_API int open(const char* path, int flags, ...) {
  int descriptor = -1;
  if (qvn::usbfs::openMocked(path, flags, descriptor)) return descriptor;
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  static auto* const nextOpen = next<int(const char*, int, ...)>("open");
  return nextOpen(path, flags, mode);
}

QVN_USBFS_API int __open_2(const char* path, int flags) {
  int descriptor = -1;
  if (qvn::usbfs::openMocked(path, flags, descriptor)) return descriptor;
  static auto* const nextOpen = next<int(const char*, int)>("__open_2");
  return nextOpen(path, flags);
}

QVN_USBFS_API int close(int descriptor) {
  if (const auto opening = Openings::instance().take(descriptor)) opening->close();
  static auto* const nextClose = next<int(int)>("close");
  return nextClose(descriptor);
}

QVN_USBFS_API int ioctl(int descriptor, unsigned long request, ...) noexcept {
  va_list arguments;
  va_start(arguments, request);
  void* argument = va_arg(arguments, void*);
  va_end(arguments);
  if (const auto opening = Openings::instance().find(descriptor)) {
    const int result = opening->ioctl(request, argument);
    if (result >= 0) return result;
    errno = -result;
    return -1;
  }
  static auto* const nextIoctl = next<int(int, unsigned long, ...)>("ioctl");
  return nextIoctl(descriptor, request, argument);
}
}
