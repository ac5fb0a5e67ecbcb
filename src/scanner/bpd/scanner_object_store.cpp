#include "scanner/bpd/scanner_object_store.h"

#include <utility>

#include "scanner/bpd/bpd_scanner.h"
#include "scanner/bpd/job/bpd_scan_job.h"

namespace qvn {
namespace {

constexpr std::uint32_t kConnectionAborted = 1236;

// What clients are told before a document is sent.
constexpr char kSending[] = "?Sending";

}  // namespace

void ScannerObjectStore::begin(Connectable& connection) {
  const std::lock_guard<std::mutex> lock(mutex_);
  connection_ = &connection;
}

void ScannerObjectStore::end() {
  {
    std::unique_lock<std::mutex> lock(mutex_);
    connection_ = nullptr;
    for (ObjectStoreBidiTask* task : running_) task->cancel();
    changed_.wait(lock, [this] { return running_.empty(); });
  }
  const std::lock_guard<std::mutex> lock(backgroundLock_);
  background_.task.reset();
}

void ScannerObjectStore::cancelExchanges() {
  const std::lock_guard<std::mutex> lock(mutex_);
  for (ObjectStoreBidiTask* task : running_) task->cancel();
}

std::uint32_t ScannerObjectStore::exchange(const StoreMessage& message, std::string& response) {
  if (scanner_.job().isTracked()) scanner_.raise(kSending);
  std::unique_lock<std::mutex> lock(mutex_);
  if (connection_ == nullptr) return kConnectionAborted;
  ObjectStoreBidiTask task(scanner_, *connection_, message.requestId, message.document, response);
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
  const std::lock_guard<std::mutex> background(backgroundLock_);
  background_.task.reset();
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (connection_ == nullptr) return;
    background_.task = std::make_unique<ObjectStoreBidiTask>(scanner_, *connection_, message.requestId,
                                                             message.document, background_.response);
  }
  background_.task->executeBackground();
}

}  // namespace qvn
