#include "bus/kernel_driver.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <vector>

namespace qvn::usb1 {
namespace {

namespace fs = std::filesystem;

// The entries of a folder whose names begin so; none when it cannot be read.
std::vector<fs::path> entries(const fs::path& folder, std::string_view prefix) {
  std::vector<fs::path> found;
  std::error_code error;
  for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
    if (at->path().filename().string().starts_with(prefix)) found.push_back(at->path());
  }
  return found;
}

// The nodes of a HID: the raw one, and those of what the system takes for keys.
std::vector<std::string> hidNodes(const fs::path& sysfs) {
  std::vector<std::string> nodes;
  for (const fs::path& hid : entries(sysfs, "0003:")) {
    for (const fs::path& raw : entries(hid / "hidraw", "hidraw"))
      nodes.push_back("/dev/" + raw.filename().string());
    for (const fs::path& input : entries(hid / "input", "input")) {
      for (const fs::path& event : entries(input, "event"))
        nodes.push_back("/dev/input/" + event.filename().string());
    }
  }
  return nodes;
}

bool isOpenSomewhere(const std::vector<std::string>& nodes) {
  if (nodes.empty()) return false;
  std::error_code error;
  for (const fs::path& process : entries("/proc", "")) {
    for (const fs::path& descriptor : entries(process / "fd", "")) {
      const std::string target = fs::read_symlink(descriptor, error).string();
      if (std::find(nodes.begin(), nodes.end(), target) != nodes.end()) return true;
    }
  }
  return false;
}

}  // namespace

bool isInUse(const std::string& sysfs, platform::UniqueDescriptor& held) {
  for (const fs::path& printer : entries(fs::path(sysfs) / "usbmisc", "lp")) {
    const std::string node = "/dev/usb/" + printer.filename().string();
    held = platform::UniqueDescriptor(open(node.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
    if (!held && errno == EBUSY) return true;
  }
  return isOpenSomewhere(hidNodes(sysfs));
}

}  // namespace qvn::usb1
