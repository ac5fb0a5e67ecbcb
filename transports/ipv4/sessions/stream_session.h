// A session with a device that sends on its own: one thread receives and delivers, in order and nothing
// queued, so that the device is slowed down to the pace of those who take it.
#pragma once

#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cerrno>
#include <utility>

#include "qvn/result_codes.h"
#include "sessions/session.h"

namespace qvn::ipv4 {

// The stream is a ReceiveBuffer that gives Items. One that has giveUpPartial can go on behind something whose
// rest does not come; others wait for it as long as it takes.
template <typename Stream>
class StreamSession : public Session {
 public:
  using Session::Session;

  std::uint32_t startThreads() override {
    return startThread([this] { readAndDeliver(); });
  }

 protected:
  // On the reader's thread, without the lock. The item ends with the call.
  virtual void deliver(const typename Stream::Item& item) = 0;

  // All that was received with one read has been delivered.
  virtual void settleLocked() {}

  // On the reader's thread, behind all that was delivered: the connection has ended. Of one that was closed
  // here nobody is told.
  virtual void deliverEnd() { currentDevice().onConnectionLost(); }

  // What the device has sent until now has been delivered.
  bool nothingUnreadLocked() const {
    int unread = 0;
    return !reading_ && (ioctl(socket_.fd(), FIONREAD, &unread) != 0 || unread == 0);
  }

  // Guarded by the lock.
  bool reading_ = false;  // the reader has received something and not delivered all of it
  bool partial_ = false;  // something has begun and waits for its rest

  Stream stream_;  // the reader's own

 private:
  static constexpr bool kGivesUp = requires(Stream & stream) { stream.giveUpPartial(); };
  // How long the rest of something may take before its start counts as garbage, in milliseconds.
  static constexpr int kRestTimeout = 500;

  void readAndDeliver() {
    for (;;) {
      pollfd entry{socket_.fd(), POLLIN, 0};
      const int ready = poll(&entry, 1, kGivesUp && stream_.isPartial() ? kRestTimeout : -1);
      setReading();
      std::uint32_t endCode = 0;
      if (ready != 0) {
        endCode = receive();
      } else if constexpr (kGivesUp) {
        stream_.giveUpPartial();
      }
      while (const auto item = stream_.next()) deliver(*item);
      if (isOver(endCode)) break;
    }
    deliverEnd();
    // Only then, so that what comes of an exchange that failed is told after the reason.
    const std::lock_guard<std::mutex> lock(mutex_);
    wakeLocked();
  }

  // Before anything is received: between, it would be neither unread nor being read.
  void setReading() {
    const std::lock_guard<std::mutex> lock(mutex_);
    reading_ = true;
  }

  // The code that ends the connection, 0 when it goes on.
  std::uint32_t receive() {
    const auto room = stream_.room();
    const ssize_t got = recv(socket_.fd(), room.data(), room.size(), MSG_DONTWAIT);
    if (got > 0) {
      stream_.add(static_cast<std::size_t>(got));
    } else if (got == 0) {
      return QRN_ERROR_NETNAME_DELETED;
    } else if (errno != EAGAIN && errno != EINTR) {
      return codeFromErrno(errno);
    }
    return QRN_ERROR_SUCCESS;
  }

  bool isOver(std::uint32_t endCode) {
    bool over = false;
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      partial_ = stream_.isPartial();
      reading_ = false;
      settleLocked();
      if (endCode != QRN_ERROR_SUCCESS) markEndedLocked(endCode);
      over = endedBy_ != 0;
    }
    // Without the lock: who wakes up needs it at once, and would only wait again.
    changed_.notify_all();
    return over;
  }
};

}  // namespace qvn::ipv4
