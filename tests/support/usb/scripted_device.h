// A USB device in the test's process that does what the test says. Whatever it can end at once it ends within
// the call that submits the transfer, on that thread.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "usbfs/peer.h"

namespace qvn::test {

using usbfs::Bytes;

class ScriptedDevice : public usbfs::LocalDevice {
 public:
  using Setup = std::array<std::uint8_t, 8>;
  // What a device makes of data that goes out: how much of it it takes, and whether the transfer then ends,
  // with a status as in urb->status. What is not taken of one that goes on is offered again by resume().
  struct Taken {
    std::size_t count;
    std::optional<int> status = 0;  // none: it goes on. -EPIPE halts the endpoint.
  };

  // Strings are numbered from 1.
  explicit ScriptedDevice(Bytes descriptors, std::vector<std::string> strings = {"Qvn", "Scripted", "0001"})
      : descriptors_(std::move(descriptors)), strings_(std::move(strings)) {}
  // After every opening of its nodes.
  ~ScriptedDevice() override = default;

  const Bytes& descriptors() const { return descriptors_; }
  const std::vector<std::string>& strings() const { return strings_; }

  // Called on the thread that submits or resumes, with nothing locked, but not by two threads at once for the
  // same endpoint. They must not unplug the device. Set them before it is plugged in.
  //
  // A control request other than the standard ones: what comes in, or nothing in answer to one that sends;
  // none stalls it. Unset: stalls.
  std::function<std::optional<Bytes>(const Setup& setup, std::span<const std::uint8_t> data)> onControl;
  // Unset: takes everything and keeps it for received().
  std::function<Taken(std::uint8_t endpoint, std::span<const std::uint8_t> data, bool endsWithZeroPacket)>
      onOut;

  // What comes in through the endpoint next. Each is one transfer that the device ends, so a request gets at
  // most one of them; one longer than the request is for several, unless the last packet does not fit whole:
  // then it is -EOVERFLOW. With a status the transfer ends with that after the bytes.
  void send(std::uint8_t endpoint, Bytes bytes, int status = 0);
  // Offers what has not been taken of what goes out.
  void resume(std::uint8_t endpoint);
  // Every transfer through the endpoint stalls until the host clears it.
  void halt(std::uint8_t endpoint);

  // What went out through the endpoint, a transfer each; and all control requests, "21 0B 0001 0000" (request
  // type, request, value, index). Both forget what they gave.
  std::vector<Bytes> takeReceived(std::uint8_t endpoint);
  std::vector<std::string> takeRequests();
  // How many transfers wait at the endpoint.
  std::size_t waiting(std::uint8_t endpoint) const;

  std::unique_ptr<usbfs::Peer> open(usbfs::Host& host) override;

 private:
  class Connection;

  struct Waiting {
    usbfs::Host* host;
    std::uint32_t id;
    std::size_t length;  // of what may come in
    Bytes data;          // that goes out
    std::size_t taken;
    bool endsWithZeroPacket;
    bool isUnlinked;  // while it is being offered
  };
  struct Incoming {
    Bytes bytes;
    std::size_t sent;
    int status;
  };
  struct Endpoint {
    std::deque<Waiting> waiting;
    std::deque<Incoming> incoming;
    std::vector<Bytes> received;
    bool isHalted = false;
    bool isOffering = false;  // somebody is in onOut with the first that waits
  };

  using Lock = std::unique_lock<std::mutex>;

  void unlink(const usbfs::Host& host, std::uint32_t id);
  void control(usbfs::Host& host, const usbfs::Transfer& transfer);
  void in(usbfs::Host& host, const usbfs::Transfer& transfer);
  void out(usbfs::Host& host, const usbfs::Transfer& transfer);
  // Without the lock while the test's function runs.
  Taken offer(std::uint8_t address, std::span<const std::uint8_t> data, bool endsWithZeroPacket, Lock& lock);
  // Serve those that wait.
  void advanceIn(std::uint8_t address);
  void advanceOut(std::uint8_t address, Lock& lock);
  std::optional<Bytes> standardReply(const Setup& setup);
  Bytes descriptor(std::uint8_t type, std::uint8_t index) const;
  std::size_t packetSize(std::uint8_t endpoint) const;

  const Bytes descriptors_;
  const std::vector<std::string> strings_;

  // Also held while results are given to hosts, so that they come in order.
  mutable std::mutex mutex_;
  std::map<std::uint8_t, Endpoint> endpoints_;
  std::vector<std::string> requests_;
};

}  // namespace qvn::test
