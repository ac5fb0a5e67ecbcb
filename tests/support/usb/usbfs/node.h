// The file that stands for a device node: a line that says what is behind it, then the device's descriptors
// as the kernel gives them to readers of the node, or nothing.
#pragma once

#include <memory>
#include <string>

#include "usbfs/peer.h"

namespace qvn::usbfs {

struct Node {
  std::string file;
  std::string line;
  Bytes descriptors;

  // Where the path is that of a mocked node whose file has such a line.
  static bool read(const char* path, Node& node);
  // None when what the line names is not there.
  std::unique_ptr<Peer> connect(Host& host) const;
};

// The file of a path below /dev; empty without a tree of mocked devices.
std::string mockedFile(const char* path);

}  // namespace qvn::usbfs
