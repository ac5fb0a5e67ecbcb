#include "scanner/bpd/scanner_object_store.h"

#include <utility>

#include "qvn/result_codes.h"
#include "scanner/bpd/bpd_scanner.h"
#include "scanner/bpd/job/bpd_scan_job.h"

namespace qvn {
namespace {

// What clients are told before a document is sent.
constexpr char kSending[] = "?Sending";

}  // namespace

void ScannerObjectStore::begin(const Connection& connection) {
  const std::lock_guard<std::mutex> lock(mutex_);
  connection_ = connection;
}

void ScannerObjectStore::end() {
  {
    std::unique_lock<std::mutex> lock(mutex_);
    connection_ = {};
    for (ObjectStoreBidiTask* task : running_) task->cancel();
    changed_.wait(lock, [this] { return running_.empty(); });
  }
  const OperationLock::Turn turn(backgroundLock_);
  background_.task.reset();
}

void ScannerObjectStore::cancelExchanges() {
  const std::lock_guard<std::mutex> lock(mutex_);
  for (ObjectStoreBidiTask* task : running_) task->cancel();
}

std::uint32_t ScannerObjectStore::exchange(const StoreMessage& message, std::string& response,
                                           const std::atomic<bool>* aborted) {
  if (scanner_.job().isTracked()) scanner_.raise(kSending);
  std::unique_lock<std::mutex> lock(mutex_);
  if (!connection_) return QRN_ERROR_CONNECTION_ABORTED;
  if (aborted != nullptr && *aborted) return QRN_ERROR_CANCELLED;
  const Connection connection = connection_;
  ObjectStoreBidiTask task(scanner_, connection, message.requestId, message.document, response);
  running_.push_back(&task);
  const struct Running {
    ScannerObjectStore& store;
    std::unique_lock<std::mutex>& lock;
    ObjectStoreBidiTask& task;
    ~Running() {
      lock.lock();
      std::erase(store.running_, &task);
      store.changed_.notify_all();
    }
  } running{*this, lock, task};
  lock.unlock();
  return task.execute();
}

std::uint32_t ScannerObjectStore::exchange(const StoreMessage& message) {
  std::string response;
  return exchange(message, response);
}

void ScannerObjectStore::sendInBackground(const StoreMessage& message) {
  if (scanner_.job().isTracked()) scanner_.raise(kSending);
  const OperationLock::Turn turn(backgroundLock_);
  // Inside what the last one delivers it cannot be ended: a device that answers with something to be answered
  // gets no answer.
  if (background_.task != nullptr && background_.task->runsHere()) return;
  background_.task.reset();
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!connection_) return;
    background_.connection = connection_;
    background_.task = std::make_unique<ObjectStoreBidiTask>(
        scanner_, background_.connection, message.requestId, message.document, background_.response);
  }
  background_.task->executeBackground();
}

}  // namespace qvn
