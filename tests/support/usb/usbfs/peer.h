// What is behind a mocked device node: something that takes transfers as a host controller does. An opening
// of the node has a peer of its own.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace qvn::usbfs {

#define QVN_USBFS_API __attribute__((visibility("default")))

using Bytes = std::vector<std::uint8_t>;

struct Transfer {
  std::uint32_t id;       // unique in its opening
  std::uint8_t endpoint;  // with the direction in the highest bit; 0x00 and 0x80 are the control endpoint
  std::array<std::uint8_t, 8> setup;  // of control transfers
  const std::uint8_t* data;           // what goes out, valid within submit() only; null where data comes in
  std::size_t length;                 // of that, or how much may come in
  bool endsWithZeroPacket;            // where its length would not show that it has ended

  bool isIn() const { return (endpoint & 0x80) != 0; }
};

// Who gets the results; outlives its peer.
class Host {
 public:
  // A transfer has ended, on any thread and within submit() too. `status` is 0 or negative as urb->status is.
  // `data` is what came in, copied before this returns, and null for what went out; `actual` is how much.
  // More than was asked for makes the status -EOVERFLOW.
  virtual void complete(std::uint32_t id, int status, const std::uint8_t* data, std::size_t actual) = 0;
  // The device is gone, and every transfer has been completed.
  virtual void disconnected() = 0;

 protected:
  ~Host() = default;
};

class Peer {
 public:
  virtual ~Peer() = default;
  // Nothing of the host is locked meanwhile.
  virtual void submit(const Transfer& transfer) = 0;
  // The transfer is to end as soon as it can, with what it has done until then. It may have ended.
  virtual void unlink(std::uint32_t id) = 0;
};

// A device in this process, behind every node that names it ("local NAME").
class LocalDevice {
 public:
  virtual ~LocalDevice() = default;
  virtual std::unique_ptr<Peer> open(Host& host) = 0;
};

// A device goes with null, after the last opening of its nodes.
QVN_USBFS_API void setLocalDevice(const std::string& name, LocalDevice* device);

// Ends this process's openings of the node whose file this is, as an unplug does. Those of other processes
// end when the file is removed.
QVN_USBFS_API void unplug(const std::string& file);

}  // namespace qvn::usbfs
