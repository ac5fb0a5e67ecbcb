#include "support/private_network.h"

#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace qvn::test {
namespace {

std::string failure(const char* what) { return std::string(what) + ": " + std::strerror(errno); }

}  // namespace

std::string enterPrivateNetwork() {
  // The network last: whatever fails before it leaves this process a usable one.
  if (unshare(CLONE_NEWNS) != 0) return failure("unshare");
  if (mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return failure("mount /");
  if (mount("tmpfs", "/run", "tmpfs", 0, nullptr) != 0) return failure("mount /run");
  if (unshare(CLONE_NEWNET) != 0) return failure("unshare");
  const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  ifreq loopback{};
  std::strcpy(loopback.ifr_name, "lo");
  loopback.ifr_flags = IFF_UP | IFF_RUNNING;
  const bool up = ioctl(fd, SIOCSIFFLAGS, &loopback) == 0;
  const std::string reason = up ? std::string() : failure("loopback");
  close(fd);
  return reason;
}

}  // namespace qvn::test
