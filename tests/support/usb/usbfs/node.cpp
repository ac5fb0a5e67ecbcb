#include "usbfs/node.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <mutex>
#include <sstream>

#include "usbfs/usbip_peer.h"

namespace qvn::usbfs {

namespace {

std::mutex localMutex;

std::map<std::string, LocalDevice*>& localDevices() {
  static auto* devices = new std::map<std::string, LocalDevice*>;  // openings may outlive static objects
  return *devices;
}

LocalDevice* localDevice(const std::string& name) {
  const std::lock_guard lock(localMutex);
  const auto found = localDevices().find(name);
  return found == localDevices().end() ? nullptr : found->second;
}

}  // namespace

void setLocalDevice(const std::string& name, LocalDevice* device) {
  const std::lock_guard lock(localMutex);
  localDevices()[name] = device;
}

std::string mockedFile(const char* path) {
  const char* root = std::getenv("UMOCKDEV_DIR");
  return root == nullptr ? std::string() : std::string(root) + path;
}

bool Node::read(const char* path, Node& node) {
  node.file = mockedFile(path);
  if (node.file.empty()) return false;
  std::ifstream in(node.file, std::ios::binary);
  if (!std::getline(in, node.line)) return false;
  if (!node.line.starts_with("usbip ") && !node.line.starts_with("local ")) return false;
  node.descriptors.assign(std::istreambuf_iterator<char>(in), {});
  return true;
}

std::unique_ptr<Peer> Node::connect(Host& host) const {
  std::istringstream words(line);
  std::string kind;
  std::string where;
  words >> kind >> where;
  if (kind == "local") {
    LocalDevice* device = localDevice(where);
    return device == nullptr ? nullptr : device->open(host);
  }
  std::uint16_t port = 0;
  std::string busId;
  words >> port >> busId;
  return UsbIpPeer::import(where, port, busId, file, host);
}

}  // namespace qvn::usbfs
