// A session whose stream is made of things of one kind: packets, commands, frames or blocks.
#pragma once

#include <mutex>
#include <optional>

#include "shared/sessions/session.h"

namespace qvn::shared {

// The stream is a ReceiveBuffer that gives Items, which are views of it. One that has giveUpPartial can go on
// behind something whose rest does not come; others wait for it as long as it takes.
template <typename Stream>
class StreamSession : public Session {
 public:
  using Session::Session;

 protected:
  using Item = typename Stream::Item;

  // With the lock: whether the item answers the request with that key.
  virtual bool isReply(const Item& /*item*/, Bytes /*key*/) const { return false; }

  // With the lock: false when nothing is left to do with the item, because it was kept for later or is for
  // nobody. `isAwaited` tells that it is the reply to a request that waits.
  virtual bool isForDeviceLocked(const Item& /*item*/, bool /*isAwaited*/) { return true; }

  // Without the lock. The item ends with the call.
  virtual void deliver(const Item& item, const DeviceReference& device) = 0;

  Stream stream_;  // of whoever reads

 private:
  static constexpr bool kGivesUp = requires(Stream & stream) { stream.giveUpPartial(); };

  ReceiveBuffer& buffer() final { return stream_; }
  bool givesUp() const final { return kGivesUp; }
  void giveUpPartial() final {
    if constexpr (kGivesUp) stream_.giveUpPartial();
  }

  Progress deliverNext(bool onlyReplies) final {
    if (!next_) next_ = stream_.next();
    if (!next_) return Progress::None;
    Exchange* answered = nullptr;
    DeviceReference device;
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      answered = waitingLocked([this](Bytes key) { return isReply(*next_, key); });
      if (!isForDeviceLocked(*next_, answered != nullptr)) {
        next_.reset();
        return Progress::Made;
      }
      if (answered == nullptr && onlyReplies) return Progress::Left;
      if (answered != nullptr) beginDeliveryLocked(*answered);
      device = device_;
    }
    deliver(*next_, device);
    next_.reset();
    if (answered != nullptr) endDelivery();
    return Progress::Made;
  }

  std::optional<Item> next_;  // of whoever reads
};

}  // namespace qvn::shared
