#include "platform/registry/registry_store.h"

#include <lmdb.h>
#include <pthread.h>

#include <atomic>
#include <filesystem>
#include <mutex>
#include <utility>

#include "platform/files/paths.h"
#include "platform/registry/registry_file.h"

namespace qvn::platform::registry {
namespace {

// The numbers of one transaction follow from its own: so many bits are left for counting within it.
constexpr unsigned kNumberBits = 24;

// The unnamed map, the only one that the store has.
constexpr MDB_dbi kMap = 1;

// The open store. It is never closed, so the state of threads that outlive their last call stays valid; a
// child made by fork forgets its parent's and opens its own.
std::atomic<MDB_env*> openStore{nullptr};

struct Process {
  std::mutex opening;
  std::mutex failureMutex;
  std::string failure;
};

Process& process() {
  static auto& instance = *new Process;  // Never destroyed: the registry may be read while the process ends.
  return instance;
}

void watchForks() {
  static std::once_flag once;
  std::call_once(once, [] {
    pthread_atfork([] { process().opening.lock(); }, [] { process().opening.unlock(); },
                   [] {
                     openStore.store(nullptr);
                     process().opening.unlock();
                   });
  });
}

ErrorCode report(StoreFailure failure) {
  if (failure.code != kSuccess) {
    const std::lock_guard guard(process().failureMutex);
    process().failure = std::move(failure.reason);
  }
  return failure.code;
}

ErrorCode errorFromStore(int error) {
  switch (error) {
    case MDB_SUCCESS:
      return kSuccess;
    case MDB_NOTFOUND:
      return kFileNotFound;
    case MDB_BAD_VALSIZE:
      return kInvalidParameter;
    default:
      return report(describeStoreError(storeFile(stateDirectory()), error));
  }
}

MDB_env* store(ErrorCode& error) {
  error = kSuccess;
  if (MDB_env* const opened = openStore.load(std::memory_order_acquire)) return opened;
  watchForks();
  const std::lock_guard guard(process().opening);
  if (MDB_env* const opened = openStore.load(std::memory_order_relaxed)) return opened;
  const std::filesystem::path directory = stateDirectory();
  if (directory.empty()) {
    error = lastError();
    return nullptr;
  }
  StoreFailure failure;
  MDB_env* const opened = openStoreFile(directory, failure);
  error = report(std::move(failure));
  if (opened != nullptr) mdb_reader_check(opened, nullptr);
  openStore.store(opened, std::memory_order_release);
  return opened;
}

int beginReading(MDB_env* environment, MDB_txn*& transaction) {
  int error = mdb_txn_begin(environment, nullptr, MDB_RDONLY, &transaction);
  if (error == MDB_READERS_FULL && mdb_reader_check(environment, nullptr) == MDB_SUCCESS) {
    error = mdb_txn_begin(environment, nullptr, MDB_RDONLY, &transaction);
  }
  return error;
}

// A thread's reading transaction, kept from one operation to the next: renewing it takes no lock.
struct ThreadReader {
  MDB_env* environment = nullptr;
  MDB_txn* transaction = nullptr;
  bool busy = false;

  ~ThreadReader();
};

thread_local bool threadIsEnding = false;
thread_local ThreadReader threadReader;
thread_local WriteTransaction* threadWriter = nullptr;

ThreadReader::~ThreadReader() {
  threadIsEnding = true;
  if (transaction != nullptr && environment == openStore.load()) mdb_txn_abort(transaction);
}

MDB_val lend(std::string_view bytes) { return MDB_val{bytes.size(), const_cast<char*>(bytes.data())}; }

std::string_view view(const MDB_val& value) {
  return {static_cast<const char*>(value.mv_data), value.mv_size};
}

}  // namespace

ErrorCode Transaction::get(std::string_view name, std::string_view& bytes) {
  MDB_val key = lend(name);
  MDB_val data{};
  const int error = mdb_get(transaction_, kMap, &key, &data);
  if (error != 0) return errorFromStore(error);
  bytes = view(data);
  return kSuccess;
}

ReadTransaction::ReadTransaction(ErrorCode& error) {
  MDB_env* const environment = store(error);
  if (environment == nullptr) return;
  if (threadWriter != nullptr) {
    transaction_ = threadWriter->transaction_;
    origin_ = Origin::Lent;
    return;
  }
  int result = 0;
  // The cached one may be in use further up the stack, or already be gone at the thread's end.
  if (threadIsEnding || threadReader.busy) {
    result = beginReading(environment, transaction_);
    if (result == 0) origin_ = Origin::Own;
  } else {
    ThreadReader& reader = threadReader;
    if (reader.environment != environment) {  // A parent's is left alone: its slot is the parent's.
      reader.transaction = nullptr;
      reader.environment = environment;
    }
    result = reader.transaction != nullptr ? mdb_txn_renew(reader.transaction)
                                           : beginReading(environment, reader.transaction);
    if (result == 0) {
      transaction_ = reader.transaction;
      reader.busy = true;
      origin_ = Origin::Cached;
    }
  }
  error = errorFromStore(result);
}

ReadTransaction::~ReadTransaction() {
  if (origin_ == Origin::Own) mdb_txn_abort(transaction_);
  if (origin_ == Origin::Cached) {
    mdb_txn_reset(transaction_);
    threadReader.busy = false;
  }
}

WriteTransaction::WriteTransaction(ErrorCode& error) {
  MDB_env* const environment = store(error);
  if (environment == nullptr) return;
  // A process killed while it read keeps pages from being used again.
  mdb_reader_check(environment, nullptr);
  const int result = mdb_txn_begin(environment, nullptr, 0, &transaction_);
  error = errorFromStore(result);
  if (result == 0) threadWriter = this;
}

WriteTransaction::~WriteTransaction() {
  if (transaction_ != nullptr) mdb_txn_abort(transaction_);
  if (threadWriter == this) threadWriter = nullptr;
}

WriteTransaction* WriteTransaction::current() { return threadWriter; }

ErrorCode WriteTransaction::put(std::string_view name, std::string_view bytes) {
  MDB_val key = lend(name);
  MDB_val data = lend(bytes);
  return errorFromStore(mdb_put(transaction_, kMap, &key, &data, 0));
}

ErrorCode WriteTransaction::erase(std::string_view name) {
  MDB_val key = lend(name);
  return errorFromStore(mdb_del(transaction_, kMap, &key, nullptr));
}

ErrorCode WriteTransaction::commit() {
  // Committing ends the transaction, whatever comes of it.
  return errorFromStore(mdb_txn_commit(std::exchange(transaction_, nullptr)));
}

ErrorCode WriteTransaction::nextNumber(std::uint64_t& number) {
  if (numbers_ >> kNumberBits != 0) return kDiskFull;
  number = (static_cast<std::uint64_t>(mdb_txn_id(transaction_)) << kNumberBits) + numbers_++;
  return kSuccess;
}

Cursor::Cursor(Transaction& transaction, ErrorCode& error) {
  error = errorFromStore(mdb_cursor_open(transaction.transaction_, kMap, &cursor_));
}

Cursor::~Cursor() {
  if (cursor_ != nullptr) mdb_cursor_close(cursor_);
}

ErrorCode Cursor::move(int operation, std::string_view name, Entry& entry) {
  MDB_val key = lend(name);
  MDB_val data{};
  const int error = mdb_cursor_get(cursor_, &key, &data, static_cast<MDB_cursor_op>(operation));
  if (error == MDB_NOTFOUND) return kNoMoreItems;
  if (error != 0) return errorFromStore(error);
  entry = {view(key), view(data)};
  return kSuccess;
}

ErrorCode Cursor::seek(std::string_view name, Entry& entry) { return move(MDB_SET_RANGE, name, entry); }

ErrorCode Cursor::next(Entry& entry) { return move(MDB_NEXT, {}, entry); }

ErrorCode Cursor::erase() { return errorFromStore(mdb_cursor_del(cursor_, 0)); }

std::uint64_t storeChanges() {
  MDB_env* const environment = openStore.load(std::memory_order_acquire);
  MDB_envinfo information{};
  // In a transaction of its own a thread sees what nobody else does yet.
  if (environment == nullptr || threadWriter != nullptr) return 0;
  return mdb_env_info(environment, &information) == 0 ? information.me_last_txnid : 0;
}

ErrorCode syncStore() {
  ErrorCode error = kSuccess;
  MDB_env* const environment = store(error);
  return environment != nullptr ? errorFromStore(mdb_env_sync(environment, 1)) : error;
}

std::string lastStoreFailure() {
  const std::lock_guard guard(process().failureMutex);
  return process().failure;
}

}  // namespace qvn::platform::registry
