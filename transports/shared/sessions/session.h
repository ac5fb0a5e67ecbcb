// One channel to a device: what comes on it, and the requests that wait for a reply.
//
// Whoever waits for a reply reads the connection by itself, since handing the reply from one thread to
// another would cost as much as the exchange. It delivers the replies that are waited for and nothing else:
// at the first thing that came unasked, whose receiver may take its time or wait for the one that reads, it
// leaves the connection to the session's own thread, which reads whenever nobody else does. So one thread at
// a time reads and delivers, in order and nothing queued: the device is slowed down to the pace of those who
// take it.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <thread>
#include <vector>

#include "qvn/transport/device.h"
#include "shared/channel/channel.h"
#include "shared/channel/channel_watch.h"
#include "shared/channel/place.h"
#include "shared/sessions/unanswered_requests.h"
#include "shared/streams/receive_buffer.h"

namespace qvn::shared {

class Session {
 public:
  using Bytes = std::span<const std::uint8_t>;

  // A request and the wait for its reply. Its maker keeps it from its sending until the end of its wait.
  class Exchange {
   public:
    // `key` is what tells the reply from others. Both stay the caller's.
    Exchange(Bytes request, Bytes key) : request_(request), key_(key) {}
    Exchange(const Exchange&) = delete;
    Exchange& operator=(const Exchange&) = delete;

   private:
    friend class Session;
    enum class Stage : std::uint8_t { Preparing, Waiting, Delivering, Over };

    const Bytes request_;
    const Bytes key_;
    // Guarded by the session's lock.
    Stage stage_ = Stage::Preparing;
    std::uint32_t code_ = 0;  // once it is over
    bool reads_ = false;      // it is the one that reads the connection
  };

  Session(std::unique_ptr<Channel> channel, const Timeouts& timeouts, const DeviceReference& device)
      : channel_(std::move(channel)), timeouts_(timeouts), device_(device) {}
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  virtual ~Session() = default;

  // Starts the threads that serve the connection: 0, or why the system has none, or no descriptors.
  virtual std::uint32_t startThreads();

  // False once the connection has ended.
  bool isAlive() const;

  // Of a connection that has ended: gives its end a moment to be told, behind all that came.
  void waitForEnd();

  // Whom what comes is for, from now on. Makes no difference to a connection that has ended.
  void setDevice(const DeviceReference& device);

  // Sends a request whose reply is then awaited, one at a time. False when the connection has turned out to
  // have ended before: nothing was sent, and there is nothing to wait for.
  bool send(Exchange& exchange);

  // Returns once the reply has been delivered, on this thread or another one, or when there will be none. 0
  // when the exchange was carried out, with `replyCode` 0 for a reply and 1460 for none within the time-out,
  // else the code of both. Without a device the reply is dropped.
  std::uint32_t await(Exchange& exchange, std::uint32_t& replyCode);

  // Any thread, also before the request has been sent, which it then is not. It is over with 1236, unless it
  // was over already, and waits for nothing but what it delivers itself.
  void cancel(Exchange& exchange);

  // Ends the connection without waiting for the threads: whoever closes may hold what the receiver of a
  // delivery waits for. A delivery that runs is finished, no other one starts.
  void close();

  // All threads have ended or are about to, without touching anything but the session.
  bool isFinished() const { return runningThreads_ == 0; }

 protected:
  enum class Progress : std::uint8_t {
    None,  // there is nothing whole
    Made,  // the next thing is done with
    Left,  // the next thing is not for this reader
  };

  // The following are called on the thread that reads, without the lock.

  // What has been received.
  virtual ReceiveBuffer& buffer() = 0;
  // Delivers the next whole thing; only what is waited for, unless this is the session's thread.
  virtual Progress deliverNext(bool onlyReplies) = 0;
  // Whether something whose rest does not come is given up. Others wait for the rest as long as it takes.
  virtual bool givesUp() const = 0;
  virtual void giveUpPartial() = 0;
  // Why what has come so far ends the connection; 0 when it does not.
  virtual std::uint32_t streamError() const { return 0; }

  // On the session's thread, behind all that was delivered: the connection has ended. Of one that was closed
  // here nobody is told.
  virtual void deliverEnd() { currentDevice().onConnectionLost(); }

  // Whether a reply could be taken for another request's: then what comes before a request is sent, which is
  // no answer to it, is taken in first, and requests that are given up are remembered.
  virtual bool mixesUpReplies() const { return true; }
  // A request goes out; its reply has been delivered.
  virtual void beginLocked() {}
  virtual void answeredLocked(Bytes /*key*/) {}

  // For deliverNext: the exchange whose reply something is, or null. What is delivered for it ends it.
  template <typename IsReply>
  Exchange* waitingLocked(const IsReply& isReply) const {
    for (Exchange* exchange : exchanges_) {
      if (exchange->stage_ == Exchange::Stage::Waiting && isReply(exchange->key_)) return exchange;
    }
    return nullptr;
  }
  void beginDeliveryLocked(Exchange& answered);
  void endDelivery();

  // The request that is about to be sent; empty when there is none.
  Bytes preparedLocked() const;

  // Waits until what has come is taken in.
  void takeInLocked(std::unique_lock<std::mutex>& lock);

  // 0, or 8 when there is no thread to be had.
  std::uint32_t startThread(std::function<void()> body);

  // Closes, and waits for the threads. The first thing in a derived class's destructor: they use its members.
  // Not on one of them.
  void finish();

  // Whom what comes is for now.
  DeviceReference currentDevice() const;

  // Lends the device some bytes where they lie, with a code.
  static void lend(const DeviceReference& device, Bytes bytes, std::uint32_t code = 0);

  // The connection has ended; the reason that came first counts.
  void endLocked(std::uint32_t code);
  virtual void wakeLocked() { changed_.notify_all(); }

  const std::unique_ptr<Channel> channel_;
  const Timeouts timeouts_;

  mutable std::mutex mutex_;         // guards what follows, and what derived classes say
  std::condition_variable changed_;  // for whoever exchanges, or is to read next
  DeviceReference device_;           // to nothing once it has been closed
  std::uint32_t endedBy_ = 0;        // 0 while the connection lives
  UnansweredRequests unanswered_;

 private:
  using Clock = std::chrono::steady_clock;
  struct Turn {
    bool received;
    bool left;  // something for the session's thread
  };

  void serve();
  // Receives what is there and delivers what it makes whole.
  Turn takeTurn(bool onlyReplies);
  Progress deliverAll(bool onlyReplies);
  // The code that ends the connection, 0 when it goes on.
  std::uint32_t receive(bool& received);

  // The connection is read by the exchange until it is released.
  void claimLocked(Exchange& exchange);
  void releaseLocked(Exchange& exchange, bool left);
  bool isFreeLocked() const { return !isRead_ && !left_; }
  // Takes in what is there; claimed at the end, unless others go on to read.
  void claimEmptyLocked(std::unique_lock<std::mutex>& lock, Exchange& exchange);
  void readLocked(std::unique_lock<std::mutex>& lock, Exchange& exchange, Clock::time_point deadline);
  void waitUntilReadable(Clock::time_point deadline, bool partial);

  ChannelWatch watch_;              // the session's thread sleeps on it
  Clock::time_point lastReceived_;  // of whoever reads

  // Guarded by the lock.
  bool isRead_ = false;               // by somebody
  bool partial_ = false;              // something has begun and waits for its rest
  bool left_ = false;                 // there is something for the session's thread, so nobody else reads
  bool endIsTold_ = false;            // only then exchanges fail: what comes of that is told after the reason
  std::vector<Exchange*> exchanges_;  // in the order they were sent
  Exchange* delivering_ = nullptr;    // whose reply is being delivered

  std::atomic<int> runningThreads_{0};
  std::vector<std::thread> threads_;
};

}  // namespace qvn::shared
