// One opening of a mocked node: the transfers that its owner has submitted and what the kernel's usbfs does
// with them.
//
// Its descriptor is the writing end of a pipe, because that can be polled as the kernel's can: full while
// there is nothing to reap, and broken when the device is gone.
#pragma once

#include <linux/usbdevice_fs.h>

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "usbfs/claims.h"
#include "usbfs/layout.h"
#include "usbfs/node.h"

namespace qvn::usbfs {

class Opening final : public Host {
 public:
  // None, with errno set, when it cannot be opened.
  static std::shared_ptr<Opening> make(const Node& node, int flags);
  ~Opening();
  Opening(const Opening&) = delete;
  Opening& operator=(const Opening&) = delete;

  int descriptor() const { return writeEnd_; }
  const std::string& file() const { return file_; }
  // What the kernel gives: 0 or more, or an error number below 0.
  int ioctl(unsigned long request, void* argument);
  // Ends all transfers and claims. The descriptor is the caller's to close.
  void close();
  // The device has been unplugged.
  void unplug();

  void complete(std::uint32_t id, int status, const std::uint8_t* data, std::size_t actual) override;
  void disconnected() override;

 private:
  struct Result {
    usbdevfs_urb* urb;
    int status;
    int actual;
  };
  struct Flight {
    std::uint32_t id;
    usbdevfs_urb* urb;  // null: somebody waits for the result
    Result* result;
    std::uint8_t* buffer;  // of what comes in, else null
    std::size_t length;
    int interface;
    bool shortIsWrong;
    int killed;  // the status that it ends with whatever the device says, or 0
  };

  Opening(const Node& node, int file);

  int submit(usbdevfs_urb* urb);
  int reap(usbdevfs_urb** urb);
  int discard(const usbdevfs_urb* urb);
  int control(const usbdevfs_ctrltransfer& request);
  int bulk(const usbdevfs_bulktransfer& request);
  int claim(unsigned interface);
  int release(unsigned interface);
  int setInterface(unsigned interface, unsigned alternate);
  int setConfiguration(unsigned configuration);
  int reset();
  int driverCommand(const usbdevfs_ioctl& command);
  int disconnectAndClaim(const usbdevfs_disconnect_claim& request);

  // Whether this opening may use an interface, an endpoint, and the recipient of a control request; as the
  // kernel does, they claim what nobody has.
  int useInterface(unsigned interface);
  int useEndpoint(unsigned endpoint, int& interface);
  int useRecipient(unsigned requestType, unsigned request, unsigned index);

  // Gives the flight its id.
  int start(Flight& flight, Transfer transfer);
  std::vector<Flight>::iterator find(std::uint32_t id);
  // Submits and waits, 0 ms without limit. Gives what came in or went out.
  int perform(Flight flight, const Transfer& transfer, unsigned timeout);
  int request(std::uint8_t type, std::uint8_t code, unsigned value, unsigned index);
  // Ends those that `matches` with the status and waits for it.
  template <typename Matches>
  bool kill(int status, const Matches& matches);
  void setReapable(bool reapable);
  bool isConnected() const;

  const std::string file_;
  int readEnd_ = -1;
  int writeEnd_ = -1;
  // Calls but those that submit, reap and discard come one at a time, as the kernel has a lock for each
  // device.
  std::mutex deviceMutex_;
  Claims claims_;
  Layout layout_;

  // Guards what follows; never held while the peer is called.
  mutable std::mutex mutex_;
  std::condition_variable landed_;
  std::uint32_t lastId_ = 0;
  std::vector<Flight> flying_;
  std::deque<Result> completed_;
  bool connected_ = true;
  bool reapable_ = true;

  std::unique_ptr<Peer> peer_;  // last: it uses the others until it goes
};

}  // namespace qvn::usbfs
