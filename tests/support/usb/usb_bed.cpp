#include "support/usb/usb_bed.h"

#include <fcntl.h>
#include <linux/usb/ch9.h>
#include <linux/usbdevice_fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "support/process/child.h"
#include "support/usb/descriptor_builder.h"

namespace qvn::test {

namespace {

namespace fs = std::filesystem;

constexpr char kController[] = "/sys/devices/pci0000:00/0000:00:14.0/";
constexpr char kRootHub[] = "usb1";

std::string hexOf(std::span<const std::uint8_t> bytes, const char* format = "%02x") {
  std::string text;
  for (const std::uint8_t byte : bytes) {
    char digits[3];
    std::snprintf(digits, sizeof digits, format, byte);
    text += digits;
  }
  return text;
}

unsigned word(const Bytes& bytes, std::size_t at) {
  return bytes.at(at) | static_cast<unsigned>(bytes.at(at + 1)) << 8;
}

std::string hexWord(unsigned number) {
  return hexOf(Bytes{static_cast<std::uint8_t>(number >> 8), static_cast<std::uint8_t>(number)});
}

std::string nodeOf(unsigned number) {
  char text[32];
  std::snprintf(text, sizeof text, "bus/usb/001/%03u", number);
  return text;
}

// A device as umockdev reads it: lines of "P: its path", "E: a property", "A: an attribute".
class Entry {
 public:
  explicit Entry(const std::string& sysPath) : text_("P: " + sysPath.substr(4) + "\n") {}

  Entry& property(const std::string& name, const std::string& value) {
    return line("E: " + name + "=" + value);
  }
  Entry& attribute(const std::string& name, const std::string& value) {
    return line("A: " + name + "=" + value + "\\n");
  }
  Entry& binary(const std::string& name, const Bytes& value) {
    return line("H: " + name + "=" + hexOf(value));
  }
  Entry& node(const std::string& name, const Bytes& content) {
    return line("N: " + name + "=" + hexOf(content, "%02X"));
  }

  const std::string& text() const { return text_; }

 private:
  Entry& line(const std::string& words) {
    text_ += words + "\n";
    return *this;
  }

  std::string text_;
};

// Reads what a device is by control requests, through its node.
class Inquiry {
 public:
  explicit Inquiry(const std::string& node) : descriptor_(open(node.c_str(), O_RDWR | O_CLOEXEC)) {
    if (descriptor_ < 0) throw std::runtime_error("no device behind " + node);
  }
  ~Inquiry() { close(descriptor_); }
  Inquiry(const Inquiry&) = delete;
  Inquiry& operator=(const Inquiry&) = delete;

  Bytes descriptors() const {
    Bytes all = read(USB_DT_DEVICE, 0, 0, USB_DT_DEVICE_SIZE);
    const Bytes header = read(USB_DT_CONFIG, 0, 0, USB_DT_CONFIG_SIZE);
    const Bytes configuration = read(USB_DT_CONFIG, 0, 0, word(header, 2));
    all.insert(all.end(), configuration.begin(), configuration.end());
    return all;
  }

  std::vector<std::string> strings() const {
    std::vector<std::string> all;
    for (unsigned index = 1; index <= 3; ++index) {
      constexpr unsigned kEnglish = 0x0409;
      const Bytes wide = read(USB_DT_STRING, index, kEnglish, 255);
      all.emplace_back();
      for (std::size_t i = 2; i < wide.size(); i += 2) all.back() += static_cast<char>(wide[i]);
    }
    return all;
  }

 private:
  Bytes read(unsigned type, unsigned index, unsigned language, unsigned size) const {
    Bytes bytes(size);
    constexpr unsigned kTimeout = 5000;
    usbdevfs_ctrltransfer request{USB_DIR_IN,
                                  USB_REQ_GET_DESCRIPTOR,
                                  static_cast<std::uint16_t>(type << 8 | index),
                                  static_cast<std::uint16_t>(language),
                                  static_cast<std::uint16_t>(size),
                                  kTimeout,
                                  bytes.data()};
    const int got = ioctl(descriptor_, USBDEVFS_CONTROL, &request);
    if (got < 0) throw std::runtime_error("the device does not tell what it is");
    bytes.resize(static_cast<std::size_t>(got));
    return bytes;
  }

  const int descriptor_;
};

Bytes rootHubDescriptors() {
  Bytes bytes = DescriptorBuilder(0x1D6B, 0x0002).interface(0, 0, USB_CLASS_HUB, 0, 0).interrupt(0x81);
  bytes[4] = USB_CLASS_HUB;
  bytes[6] = 1;
  return bytes;
}

}  // namespace

// The program that keeps the tree.
class UsbBed::Tree {
 public:
  Tree() : program_({QVN_USB_MOCK_SYSFS}), root_(program_.readLine().value_or("")) {
    if (root_.empty()) throw std::runtime_error("no sysfs: " + program_.errors());
    setenv("UMOCKDEV_DIR", root_.c_str(), 1);
  }
  ~Tree() {
    unsetenv("UMOCKDEV_DIR");
    program_.closeInput();
    program_.wait();
  }
  Tree(const Tree&) = delete;
  Tree& operator=(const Tree&) = delete;

  const std::string& root() const { return root_; }

  // These also send the event, once everything is there, or gone.
  void add(const Entry& entry) { order(entry.text()); }
  void remove(const std::string& sysPath) { order("R: " + sysPath + "\n"); }

 private:
  void order(const std::string& request) {
    program_.write(request + "\n");
    const std::string answer = program_.readLine().value_or(program_.errors());
    if (answer != "ok") throw std::runtime_error("sysfs: " + answer);
  }

  Child program_;
  const std::string root_;
};

UsbBed::UsbBed() : tree_(std::make_unique<Tree>()) {
  add(kRootHub, "local root-hub", rootHubDescriptors(), {"Linux", "Root Hub", "0000:00:14.0"}, 1);
}

// The tree goes without events.
UsbBed::~UsbBed() {
  for (const auto& [port, plugged] : plugged_) kill(plugged);
}

void UsbBed::kill(const Plugged& plugged) const {
  usbfs::unplug(path("/dev/" + nodeOf(plugged.number)));
  if (!plugged.localName.empty()) usbfs::setLocalDevice(plugged.localName, nullptr);
}

std::string UsbBed::path(const std::string& below) const { return tree_->root() + below; }

UsbBed::Plugged& UsbBed::at(const std::string& port) {
  const auto found = plugged_.find(port);
  if (found == plugged_.end()) throw std::runtime_error("nothing is plugged into " + port);
  return found->second;
}

std::string UsbBed::node(const std::string& port) const { return "/dev/" + nodeOf(plugged_.at(port).number); }

void UsbBed::plug(ScriptedDevice& device, const std::string& port) {
  const unsigned number = take(port);
  const std::string name = "device" + std::to_string(number);
  usbfs::setLocalDevice(name, &device);
  add(port, "local " + name, device.descriptors(), device.strings(), number);
  at(port).localName = name;
}

void UsbBed::plug(std::uint16_t serverPort, const std::string& port, const std::string& busId) {
  const unsigned number = take(port);
  const std::string line = "usbip 127.0.0.1 " + std::to_string(serverPort) + " " + busId;
  const fs::path file = path("/dev/" + nodeOf(number));
  fs::create_directories(file.parent_path());
  std::ofstream(file) << line << "\n";
  Bytes descriptors;
  std::vector<std::string> strings;
  try {
    const Inquiry inquiry("/dev/" + nodeOf(number));
    descriptors = inquiry.descriptors();
    strings = inquiry.strings();
  } catch (...) {
    fs::remove(file);
    throw;
  }
  add(port, line, descriptors, strings, number);
}

unsigned UsbBed::take(const std::string& port) {
  if (plugged_.count(port) != 0) throw std::runtime_error("something is plugged into " + port);
  return ++lastNumber_;
}

void UsbBed::add(const std::string& port, const std::string& line, const Bytes& descriptors,
                 const std::vector<std::string>& strings, unsigned number) {
  const bool isHub = port == kRootHub;
  Plugged plugged{number, kController + std::string(kRootHub) + (isHub ? "" : "/" + port), {}, {}};
  Bytes content(line.begin(), line.end());
  content.push_back('\n');
  content.insert(content.end(), descriptors.begin(), descriptors.end());
  char product[32];
  std::snprintf(product, sizeof product, "%x/%x/%x", word(descriptors, 8), word(descriptors, 10),
                word(descriptors, 12));
  constexpr std::size_t kConfiguration = USB_DT_DEVICE_SIZE;
  Entry device(plugged.sysPath);
  device.node(nodeOf(number), content)
      .property("SUBSYSTEM", "usb")
      .property("DEVTYPE", "usb_device")
      .property("DEVNAME", "/dev/" + nodeOf(number))
      .property("MAJOR", "189")
      .property("MINOR", std::to_string(number - 1))
      .property("BUSNUM", "001")
      .property("DEVNUM", nodeOf(number).substr(12))
      .property("PRODUCT", product)
      .property("ID_VENDOR_ID", hexWord(word(descriptors, 8)))
      .property("ID_MODEL_ID", hexWord(word(descriptors, 10)))
      .property("ID_SERIAL_SHORT", strings.at(2))
      .attribute("busnum", "1")
      .attribute("devnum", std::to_string(number))
      .attribute("devpath", isHub ? "0" : port.substr(2))
      .attribute("speed", "480")
      .attribute("idVendor", hexWord(word(descriptors, 8)))
      .attribute("idProduct", hexWord(word(descriptors, 10)))
      .attribute("bcdDevice", hexWord(word(descriptors, 12)))
      .attribute("bDeviceClass", hexOf({&descriptors[4], 1}))
      .attribute("bNumConfigurations", std::to_string(descriptors[17]))
      .attribute("bNumInterfaces", " " + std::to_string(descriptors.at(kConfiguration + 4)))
      .attribute("bConfigurationValue", std::to_string(descriptors.at(kConfiguration + 5)))
      .attribute("manufacturer", strings.at(0))
      .attribute("product", strings.at(1))
      .attribute("serial", strings.at(2))
      .binary("descriptors", descriptors);
  tree_->add(device);

  for (std::size_t at = 0; at + 1 < descriptors.size() && descriptors[at] != 0; at += descriptors[at]) {
    if (descriptors[at + 1] != USB_DT_INTERFACE || descriptors.at(at + 3) != 0) continue;
    plugged.interfaces.push_back((isHub ? "1-0" : port) + ":1." + std::to_string(descriptors[at + 2]));
    tree_->add(Entry(plugged.sysPath + "/" + plugged.interfaces.back())
                   .property("SUBSYSTEM", "usb")
                   .property("DEVTYPE", "usb_interface")
                   .property("PRODUCT", product)
                   .attribute("bInterfaceNumber", hexOf({&descriptors[at + 2], 1}))
                   .attribute("bInterfaceClass", hexOf({&descriptors.at(at + 5), 1}))
                   .attribute("bInterfaceSubClass", hexOf({&descriptors.at(at + 6), 1}))
                   .attribute("bInterfaceProtocol", hexOf({&descriptors.at(at + 7), 1})));
  }
  plugged_[port] = plugged;
}

void UsbBed::unplug(const std::string& port) {
  const Plugged gone = at(port);
  const fs::path file = path(node(port));
  plugged_.erase(port);
  // First the device is dead, then its node goes, then udev tells so.
  kill(gone);
  for (const auto& beside : fs::directory_iterator(file.parent_path())) {
    if (beside.path().filename().string().starts_with(file.filename().string())) fs::remove(beside.path());
  }
  for (const std::string& interface : gone.interfaces) tree_->remove(gone.sysPath + "/" + interface);
  tree_->remove(gone.sysPath);
}

std::string UsbBed::bindUsblp(unsigned interface, const std::string& port) {
  const Plugged& device = at(port);
  const std::string name = "lp" + std::to_string(lastPrinter_++);
  tree_->add(Entry(device.sysPath + "/" + port + ":1." + std::to_string(interface) + "/usbmisc/" + name)
                 .node("usb/" + name, {0})
                 .property("SUBSYSTEM", "usbmisc")
                 .property("DEVNAME", "/dev/usb/" + name));
  std::ofstream(path(node(port)) + ".driver" + std::to_string(interface)) << "usblp usb/" << name << "\n";
  return "/dev/usb/" + name;
}

std::vector<std::pair<std::string, std::string>> UsbBed::environment(const std::string& runtime) const {
  const std::string first = runtime.empty() ? "" : runtime + ":";
  return {{"UMOCKDEV_DIR", tree_->root()}, {"LD_PRELOAD", first + QVN_USB_BED_PRELOAD}};
}

}  // namespace qvn::test
