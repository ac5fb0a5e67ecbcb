#include "usbfs/claims.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "usbfs/node.h"

namespace qvn::usbfs {

namespace {

constexpr char kBound[] = "driver";
constexpr char kParted[] = "parted";

struct flock lockOf(unsigned interface, int type) {
  struct flock lock = {};
  lock.l_type = static_cast<short>(type);
  lock.l_whence = SEEK_SET;
  lock.l_start = static_cast<off_t>(interface);
  lock.l_len = 1;
  return lock;
}

}  // namespace

Claims::~Claims() { ::close(descriptor_); }

std::string Claims::driverFile(unsigned interface, const char* state) const {
  return file_ + "." + state + std::to_string(interface);
}

std::string Claims::nodeOf(const std::string& driverFile) {
  std::ifstream in(driverFile);
  std::string name;
  std::string node;
  in >> name >> node;
  return node.empty() ? std::string() : mockedFile("/dev/") + node;
}

std::string Claims::driver(unsigned interface) const {
  std::ifstream in(driverFile(interface, kBound));
  std::string name;
  if (in >> name) return name;
  struct flock lock = lockOf(interface, F_WRLCK);
  const bool isFree =
      !holds(interface) && fcntl(descriptor_, F_OFD_GETLK, &lock) == 0 && lock.l_type == F_UNLCK;
  return isFree ? "" : "usbfs";
}

int Claims::claim(unsigned interface) {
  if (holds(interface)) return 0;
  if (std::filesystem::exists(driverFile(interface, kBound))) return -EBUSY;
  struct flock lock = lockOf(interface, F_WRLCK);
  if (fcntl(descriptor_, F_OFD_SETLK, &lock) != 0) return -EBUSY;
  held_.insert(interface);
  return 0;
}

int Claims::release(unsigned interface) {
  if (held_.erase(interface) == 0) return -EINVAL;
  struct flock lock = lockOf(interface, F_UNLCK);
  fcntl(descriptor_, F_OFD_SETLK, &lock);
  return 0;
}

int Claims::disconnect(unsigned interface) {
  const std::string bound = driverFile(interface, kBound);
  const std::string node = nodeOf(bound);
  if (std::rename(bound.c_str(), driverFile(interface, kParted).c_str()) != 0) return -ENODATA;
  if (!node.empty()) unlink(node.c_str());
  return 0;
}

int Claims::connect(unsigned interface) {
  if (!driver(interface).empty()) return -EBUSY;
  const std::string bound = driverFile(interface, kBound);
  if (std::rename(driverFile(interface, kParted).c_str(), bound.c_str()) != 0)
    return 0;  // no driver wants it
  const std::string node = nodeOf(bound);
  if (!node.empty()) std::ofstream{node};
  return 0;
}

}  // namespace qvn::usbfs
