// A program that keeps the bed's sysfs and sends udev's events, in a process of its own: umockdev does so
// through libudev, which keeps things for its whole process without a lock, and libusb uses it on a thread.
//
// It prints where the tree is. Then it takes a device to add, as umockdev describes one, or "R: PATH" to
// remove one, with an empty line behind each, and prints "ok", or why not. The tree goes when its input ends.
#include <umockdev.h>

#include <filesystem>
#include <iostream>
#include <memory>
#include <string>

namespace {

using Testbed = std::unique_ptr<UMockdevTestbed, decltype(&g_object_unref)>;

std::string rootOf(UMockdevTestbed* bed) {
  const std::unique_ptr<char, decltype(&g_free)> root(umockdev_testbed_get_root_dir(bed), g_free);
  return root.get();
}

// Its event comes when nobody finds it any more.
void remove(UMockdevTestbed* bed, const std::string& path) {
  std::error_code ignored;
  const std::string name = std::filesystem::path(path).filename().string();
  std::filesystem::remove(rootOf(bed) + "/sys/bus/usb/devices/" + name, ignored);
  umockdev_testbed_uevent(bed, path.c_str(), "remove");
  umockdev_testbed_remove_device(bed, path.c_str());
}

std::string add(UMockdevTestbed* bed, const std::string& device) {
  GError* error = nullptr;
  if (umockdev_testbed_add_from_string(bed, device.c_str(), &error) != 0) return "ok";
  const std::unique_ptr<GError, decltype(&g_error_free)> owned(error, g_error_free);
  return error->message;
}

}  // namespace

int main() {
  const Testbed bed(umockdev_testbed_new(), g_object_unref);
  std::cout << rootOf(bed.get()) << std::endl;
  std::string request;
  for (std::string line; std::getline(std::cin, line);) {
    if (!line.empty()) {
      request += line + "\n";
      continue;
    }
    if (request.starts_with("R: ")) {
      remove(bed.get(), request.substr(3, request.size() - 4));
      std::cout << "ok" << std::endl;
    } else {
      std::cout << add(bed.get(), request) << std::endl;
    }
    request.clear();
  }
}
