// Which interfaces one opening of a node has claimed, and who else has which. Claims are locks of an open
// file description, a byte for each interface, so that those of a killed process end.
//
// The kernel driver of an interface is a file beside the node, NODE.driverN: its name and the node below /dev
// that it makes, "usblp usb/lp0".
#pragma once

#include <set>
#include <string>

namespace qvn::usbfs {

class Claims {
 public:
  // Takes over the descriptor of the node's file.
  Claims(std::string file, int descriptor) : file_(std::move(file)), descriptor_(descriptor) {}
  ~Claims();
  Claims(const Claims&) = delete;
  Claims& operator=(const Claims&) = delete;

  const std::set<unsigned>& held() const { return held_; }
  bool holds(unsigned interface) const { return held_.count(interface) != 0; }
  // These give 0, or an error number below 0 as the kernel does.
  int claim(unsigned interface);
  int release(unsigned interface);
  // The kernel's driver goes, and comes back.
  int disconnect(unsigned interface);
  int connect(unsigned interface);
  // Empty when nobody has the interface.
  std::string driver(unsigned interface) const;

 private:
  std::string driverFile(unsigned interface, const char* state) const;
  // The driver's own node as its file says; empty where there is none.
  static std::string nodeOf(const std::string& driverFile);

  const std::string file_;
  const int descriptor_;
  std::set<unsigned> held_;
};

}  // namespace qvn::usbfs
