// The registry's file: an ordered map from bytes to bytes with transactions, opened once per process.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/base/error.h"
#include "platform/files/file_size_signal.h"

struct MDB_txn;
struct MDB_cursor;

namespace qvn::platform::registry {

// A consistent view of the store; in a WriteTransaction one that changes with the caller's own writes, which
// then invalidate what was read before.
class Transaction {
 public:
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  // The bytes stored under `name`, valid as long as the view. 2 when there are none.
  ErrorCode get(std::string_view name, std::string_view& bytes);

 protected:
  friend class Cursor;
  friend class ReadTransaction;
  Transaction() = default;
  ~Transaction() = default;

  MDB_txn* transaction_ = nullptr;
};

// What a reading operation of the calling thread sees: the last committed state, or the state so far of the
// write transaction that the thread is in.
class ReadTransaction : public Transaction {
 public:
  explicit ReadTransaction(ErrorCode& error);
  ~ReadTransaction();

 private:
  enum class Origin { None, Lent, Cached, Own };
  Origin origin_ = Origin::None;
};

// The one transaction of all processes that may write.
class WriteTransaction : public Transaction {
 public:
  // Waits until no other writes. The calling thread must not be in a write transaction.
  explicit WriteTransaction(ErrorCode& error);
  // Undoes what was not committed.
  ~WriteTransaction();

  // The write transaction that the calling thread is in; null when in none.
  static WriteTransaction* current();

  ErrorCode put(std::string_view name, std::string_view bytes);
  ErrorCode erase(std::string_view name);
  ErrorCode commit();

  // A number greater than any given before, by any process. 112 when there is none left in this transaction.
  ErrorCode nextNumber(std::uint64_t& number);

 private:
  FileSizeSignalBlock block_;
  std::uint64_t numbers_ = 0;
};

// Walks the store in the order of the names.
class Cursor {
 public:
  Cursor(Transaction& transaction, ErrorCode& error);
  ~Cursor();
  Cursor(const Cursor&) = delete;
  Cursor& operator=(const Cursor&) = delete;

  struct Entry {
    std::string_view name;
    std::string_view bytes;
  };

  // The first entry at or after `name`, and the one after the last that was given. 259 at the end.
  ErrorCode seek(std::string_view name, Entry& entry);
  ErrorCode next(Entry& entry);

  // Removes the entry last given; next() gives the one after it.
  ErrorCode erase();

 private:
  ErrorCode move(int operation, std::string_view name, Entry& entry);

  MDB_cursor* cursor_ = nullptr;
};

// See changes in registry.h.
std::uint64_t storeChanges();

// Waits until all committed writes are on disk.
ErrorCode syncStore();

// See lastFailure in registry.h.
std::string lastStoreFailure();

}  // namespace qvn::platform::registry
