// A connection that is one session at a time.
#pragma once

#include <memory>
#include <mutex>
#include <stop_token>
#include <utility>

#include "qvn/result_codes.h"
#include "qvn/transport/data.h"
#include "qvn/transport/device.h"
#include "shared/connections/transport_connection.h"
#include "shared/sessions/retired_sessions.h"
#include "shared/sessions/session.h"

namespace qvn::shared {

// Connected from the first open until the last close, and on while it is tagged. A session that the device
// ended, or that the next use cannot be trusted to, is replaced by a new one before that use.
template <typename SessionType>
class SessionConnection : public TransportConnection {
 public:
  explicit SessionConnection(RetiredSessions& retired) : retired_(retired) {}
  ~SessionConnection() override { retired_.retire(std::move(session_)); }

  void setPlace(std::shared_ptr<const Place> place) override {
    const std::lock_guard<std::mutex> lock(mutex_);
    place_ = std::move(place);
  }

  // Who gets what comes unasked, a device, until the slot gets null.
  bool setChild(std::uint32_t index, Connectable* child) override {
    if (index == 0) {
      auto* const device = static_cast<Device*>(child);
      setDevice(device != nullptr ? DeviceReference(*device) : DeviceReference());
    }
    return TransportConnection::setChild(index, child);
  }

  std::uint32_t doOpen() override {
    const std::lock_guard<std::mutex> lock(mutex_);
    timeouts_ = place_->timeouts();
    if (session_ == nullptr || !session_->isAlive()) {
      std::shared_ptr<SessionType> session;
      const std::uint32_t rc = startSession(*place_, timeouts_, device_, session);
      if (rc != QRN_ERROR_SUCCESS) return rc;
      retired_.retire(std::exchange(session_, std::move(session)));
    }
    opened_ = true;
    return QRN_ERROR_SUCCESS;
  }

  std::uint32_t doClose() override {
    const std::lock_guard<std::mutex> lock(mutex_);
    opened_ = false;
    if (!isWantedLocked()) endSessionLocked();
    return QRN_ERROR_SUCCESS;
  }

  void setTag(std::uint32_t tag) override {
    const std::lock_guard<std::mutex> lock(mutex_);
    Connectable::setTag(tag);
    if (!isWantedLocked()) endSessionLocked();
  }

 protected:
  void setDevice(const DeviceReference& device) {
    const std::lock_guard<std::mutex> lock(mutex_);
    device_ = device;
    if (session_ != nullptr) session_->setDevice(device);
  }

  // For each family: whether what these bytes bring could be told from what else still comes on the session;
  // and what a new one is told before it is used.
  virtual bool isUsable(const SessionType& /*session*/, Session::Bytes /*bytes*/) const { return true; }
  virtual void prepare(SessionType& /*session*/) {}

  // Whether the next request may be sent while one still waits for its reply.
  enum class Overlap : bool { No, Yes };

  // Sends a request and returns once its reply has been delivered. `turn` holds turn_, and with overlap no
  // longer than until the request has gone out. 0 when the exchange was carried out, with `replyCode` 0 for a
  // reply and 1460 for none; else the code of both, 1236 when it was cancelled. `key` tells the reply from
  // others.
  std::uint32_t exchange(std::unique_lock<std::mutex>& turn, Session::Bytes request, Session::Bytes key,
                         Overlap overlap, const std::stop_token& cancelled, std::uint32_t& replyCode) {
    for (bool again = false;; again = true) {
      std::shared_ptr<SessionType> session;
      const std::uint32_t rc = readySession(request, session);
      if (rc != QRN_ERROR_SUCCESS) return replyCode = rc;
      Session::Exchange current(request, key);
      const std::stop_callback onCancel(cancelled, [&] { session->cancel(current); });
      // A device may have ended the connection just before, and be there again.
      if (!session->send(current) && !again) continue;
      if (overlap == Overlap::Yes) turn.unlock();
      return session->await(current, replyCode);
    }
  }

  // What the request's sender is told: all of it or nothing was sent, and how it went.
  static std::uint32_t answer(Data& request, std::uint32_t result, std::uint32_t replyCode) {
    request.setCount(result == QRN_ERROR_SUCCESS ? request.getLength() : 0);
    request.setRc(replyCode);
    return result;
  }

  // The session to use for these bytes, with turn_ held: a new one, prepared, when the old one has ended or
  // is not usable for them.
  std::uint32_t readySession(Session::Bytes bytes, std::shared_ptr<SessionType>& session) {
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      session = session_;
    }
    if (session == nullptr) return QRN_ERROR_CONNECTION_INVALID;
    const bool isAlive = session->isAlive();
    if (isAlive && isUsable(*session, bytes)) return QRN_ERROR_SUCCESS;
    if (!isAlive) session->waitForEnd();
    // The old one goes first: the device may take only one connection, or hold a lock for it.
    session->close();
    std::shared_ptr<const Place> place;
    Timeouts timeouts;
    DeviceReference device;
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      place = place_;
      timeouts = timeouts_;
      device = device_;
    }
    std::shared_ptr<SessionType> made;
    const std::uint32_t rc = startSession(*place, timeouts, device, made);
    if (rc != QRN_ERROR_SUCCESS) return rc;
    prepare(*made);
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!isWantedLocked() || session_ != session) {
      retired_.retire(std::move(made));
      return QRN_ERROR_CONNECTION_ABORTED;
    }
    made->setDevice(device_);
    session_ = made;
    retired_.retire(std::exchange(session, std::move(made)));
    return QRN_ERROR_SUCCESS;
  }

  std::mutex turn_;  // one use of the session at a time; taken before mutex_

 private:
  // 0 and a session on a new channel, whose threads run, or why not.
  static std::uint32_t startSession(const Place& place, const Timeouts& timeouts,
                                    const DeviceReference& device, std::shared_ptr<SessionType>& session) {
    std::unique_ptr<Channel> channel;
    std::uint32_t rc = place.connect(timeouts, channel);
    if (rc != QRN_ERROR_SUCCESS) return rc;
    auto made = std::make_shared<SessionType>(std::move(channel), timeouts, device);
    rc = made->startThreads();
    if (rc == QRN_ERROR_SUCCESS) session = std::move(made);
    return rc;
  }

  void endSessionLocked() { retired_.retire(std::exchange(session_, nullptr)); }
  bool isWantedLocked() const { return opened_ || getTag() != 0; }

  RetiredSessions& retired_;

  std::mutex mutex_;  // guards what follows
  std::shared_ptr<const Place> place_;
  Timeouts timeouts_{};
  DeviceReference device_;
  bool opened_ = false;
  std::shared_ptr<SessionType> session_;
};

}  // namespace qvn::shared
