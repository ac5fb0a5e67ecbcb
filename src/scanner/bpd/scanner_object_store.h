// ScannerObjectStore: the documents that a Bpd scanner exchanges with the objects in its device.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "bidi/object_store/object_store_bidi_task.h"
#include "bidi/object_store/store_messages.h"
#include "common/clients/operation_lock.h"
#include "device/connection.h"

namespace qvn {

class BpdScanner;

// Any thread. While the job's track is on, clients are told of every document before it is sent.
class ScannerObjectStore {
 public:
  explicit ScannerObjectStore(BpdScanner& scanner) : scanner_(scanner) {}

  // From now on documents go out on the connection.
  void begin(const Connection& connection);
  // Ends what is going on and lets nothing begin: returns when nothing of it uses the connection any more.
  void end();

  // Ends the exchanges that are going on, without waiting for that. Later ones are not affected.
  void cancelExchanges();

  // Returns when the reply, which `response` becomes, is there: 0; 87 for an exception; 1236 when there is no
  // connection any more; else the transport's code. With `aborted` it does not begin once that is set: 1223.
  std::uint32_t exchange(const StoreMessage& message, std::string& response,
                         const std::atomic<bool>* aborted = nullptr);
  std::uint32_t exchange(const StoreMessage& message);

  // Returns at once; nobody awaits the reply. The last document sent so is no longer waited for.
  void sendInBackground(const StoreMessage& message);

 private:
  struct BackgroundSend {
    std::string response;
    Connection connection;
    std::unique_ptr<ObjectStoreBidiTask> task;
  };

  BpdScanner& scanner_;

  std::mutex mutex_;  // guards what follows
  std::condition_variable changed_;
  Connection connection_;
  std::vector<ObjectStoreBidiTask*> running_;

  OperationLock backgroundLock_{LockRank::BackgroundSend};  // guards the send; taken before mutex_
  BackgroundSend background_;
};

}  // namespace qvn
