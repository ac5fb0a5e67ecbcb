#include "platform/registry/registry.h"

#include <unistd.h>

#include <algorithm>
#include <utility>

#include "platform/base/failure.h"
#include "platform/registry/registry_path.h"
#include "platform/registry/registry_record.h"
#include "platform/registry/registry_store.h"

namespace qvn::platform::registry {

struct KeyAccess {
  static std::uint64_t id(const Key& key) { return key.id_; }
  static void open(Key& key, std::uint64_t id) { key.id_ = id; }
};

namespace {

bool mayUse(const KeyRecord& record) {
  if (record.access.everyone) return true;
  const uid_t user = geteuid();
  return user == 0 || user == record.owner;
}

// Runs `read` on a view of the store.
template <typename Read>
ErrorCode reading(const Read& read) {
  ErrorCode error = kSuccess;
  ReadTransaction view(error);
  if (error == kSuccess) error = read(view);
  return fail(error);
}

// Runs `change` as a transaction of its own, or as a part of the one that the thread is in.
template <typename Change>
ErrorCode writing(const Change& change) {
  if (WriteTransaction* const current = WriteTransaction::current()) return fail(change(*current));
  ErrorCode error = kSuccess;
  WriteTransaction transaction(error);
  if (error == kSuccess) error = change(transaction);
  if (error == kSuccess) error = transaction.commit();
  return fail(error);
}

// The name in the store of an open key. 1018 when the key was deleted.
ErrorCode nameOf(Transaction& view, const Key& key, StoreName& name) {
  if (!key.isOpen()) return kInvalidHandle;
  std::string_view bytes;
  const ErrorCode error = view.get(StoreName::identifier(KeyAccess::id(key)).bytes(), bytes);
  if (error == kFileNotFound) return kKeyDeleted;
  if (error == kSuccess) name = StoreName::copyOf(bytes);
  return error;
}

ErrorCode checkExists(Transaction& view, const Key& key) {
  StoreName name;
  return nameOf(view, key, name);
}

ErrorCode findKey(Transaction& view, const StoreName& name, KeyRecord& record) {
  std::string_view bytes;
  ErrorCode error = view.get(name.bytes(), bytes);
  if (error == kSuccess) error = KeyRecord::decode(bytes, record);
  if (error == kSuccess && !mayUse(record)) error = kAccessDenied;
  return error;
}

ErrorCode findAndOpen(Transaction& view, const StoreName& name, Key& key) {
  KeyRecord record{};
  const ErrorCode error = findKey(view, name, record);
  if (error == kSuccess) KeyAccess::open(key, record.id);
  return error;
}

ErrorCode writeKey(WriteTransaction& transaction, const StoreName& name, KeyRecord& record) {
  ErrorCode error = transaction.nextNumber(record.id);
  if (error == kSuccess) error = transaction.put(name.bytes(), record.encode());
  if (error == kSuccess) error = transaction.put(StoreName::identifier(record.id).bytes(), name.bytes());
  return error;
}

// Opens or makes each key of the path in turn.
ErrorCode makePath(WriteTransaction& transaction, Hive hive, std::string_view path, Access access, Key& key) {
  StoreName name = StoreName::root(hive);
  KeyRecord parent{};
  if (const ErrorCode error = findKey(transaction, name, parent); error != kSuccess) return error;
  for (std::string_view part = takeComponent(path); !part.empty(); part = takeComponent(path)) {
    if (const ErrorCode error = name.appendPath(part); error != kSuccess) return error;
    KeyRecord record{};
    ErrorCode error = findKey(transaction, name, record);
    if (error == kFileNotFound) {
      record = {.id = 0,
                .owner = geteuid(),
                .access = parent.access.inheritable ? parent.access : access,
                .name = part};
      error = writeKey(transaction, name, record);
    }
    if (error != kSuccess) return error;
    parent = record;
  }
  KeyAccess::open(key, parent.id);
  return kSuccess;
}

// Calls `use` for each entry whose name starts with `prefix`, until it answers a code.
template <typename Use>
ErrorCode forEachEntry(Cursor& cursor, std::string_view prefix, const Use& use) {
  Cursor::Entry entry;
  ErrorCode error = cursor.seek(prefix, entry);
  while (error == kSuccess && entry.name.starts_with(prefix)) {
    error = use(entry);
    if (error == kSuccess) error = cursor.next(entry);
  }
  return error == kNoMoreItems ? kSuccess : error;
}

ErrorCode deleteValues(WriteTransaction& transaction, std::uint64_t id) {
  ErrorCode error = kSuccess;
  Cursor cursor(transaction, error);
  if (error != kSuccess) return error;
  const StoreName values = StoreName::valuesOf(id);
  return forEachEntry(cursor, values.bytes(), [&](const Cursor::Entry&) { return cursor.erase(); });
}

ErrorCode checkNoSubkeys(Transaction& view, StoreName name) {
  ErrorCode error = kSuccess;
  Cursor cursor(view, error);
  if (error != kSuccess) return error;
  name.appendSeparator();
  return forEachEntry(cursor, name.bytes(), [](const Cursor::Entry&) { return kKeyHasChildren; });
}

ErrorCode findValue(Transaction& view, const Key& key, std::string_view name, ValueRecord& record) {
  if (!key.isOpen()) return kInvalidHandle;
  StoreName stored = StoreName::valuesOf(KeyAccess::id(key));
  if (const ErrorCode error = stored.appendValueName(name); error != kSuccess) return error;
  std::string_view bytes;
  ErrorCode error = view.get(stored.bytes(), bytes);
  if (error == kSuccess) return ValueRecord::decode(bytes, record);
  if (error == kFileNotFound) {
    if (const ErrorCode missing = checkExists(view, key); missing != kSuccess) error = missing;
  }
  return error;
}

bool isValid(ValueType type, std::string_view data) {
  switch (type) {
    case ValueType::String:
    case ValueType::Binary:
      return true;
    case ValueType::Dword:
      return data.size() == sizeof(std::uint32_t);
  }
  return false;
}

}  // namespace

std::string dwordBytes(std::uint32_t number) {
  std::string bytes;
  for (unsigned shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(number >> shift & 0xFF);
  return bytes;
}

std::optional<std::uint32_t> dwordOf(ValueType type, std::string_view data) {
  if (type != ValueType::Dword || !isValid(type, data)) return std::nullopt;
  std::uint32_t number = 0;
  for (std::size_t i = data.size(); i-- > 0;) number = number << 8 | static_cast<unsigned char>(data[i]);
  return number;
}

ErrorCode openKey(Hive hive, std::string_view path, Key& key) {
  StoreName name = StoreName::root(hive);
  if (const ErrorCode error = name.appendPath(path); error != kSuccess) return fail(error);
  return reading([&](Transaction& view) { return findAndOpen(view, name, key); });
}

ErrorCode createKey(Hive hive, std::string_view path, Access access, Key& key) {
  // Most calls find the key in place, and reading waits for nobody.
  StoreName name = StoreName::root(hive);
  ErrorCode error = name.appendPath(path);
  if (error == kSuccess) {
    ReadTransaction view(error);
    if (error == kSuccess) error = findAndOpen(view, name, key);
  }
  if (error != kFileNotFound) return fail(error);
  return writing(
      [&](WriteTransaction& transaction) { return makePath(transaction, hive, path, access, key); });
}

ErrorCode deleteKey(const Key& parent, std::string_view path) {
  return writing([&](WriteTransaction& transaction) {
    StoreName name;
    ErrorCode error = nameOf(transaction, parent, name);
    const std::size_t parentSize = name.bytes().size();
    if (error == kSuccess) error = name.appendPath(path);
    if (error == kSuccess && name.bytes().size() == parentSize) error = kInvalidParameter;
    KeyRecord record{};
    if (error == kSuccess) error = findKey(transaction, name, record);
    if (error == kSuccess) error = checkNoSubkeys(transaction, name);
    if (error == kSuccess) error = deleteValues(transaction, record.id);
    if (error == kSuccess) error = transaction.erase(StoreName::identifier(record.id).bytes());
    if (error == kSuccess) error = transaction.erase(name.bytes());
    return error;
  });
}

ErrorCode openSubkey(const Key& parent, std::string_view path, Key& key) {
  return reading([&](Transaction& view) {
    StoreName name;
    ErrorCode error = nameOf(view, parent, name);
    if (error == kSuccess) error = name.appendPath(path);
    if (error == kSuccess) error = findAndOpen(view, name, key);
    return error;
  });
}

std::uint64_t changes() { return storeChanges(); }

ErrorCode flush() { return fail(syncStore()); }

ErrorCode getValue(const Key& key, std::string_view name, Value& value) {
  return readValue(key, name, [&](ValueType type, std::string_view data) {
    value.type = type;
    value.data.assign(data);
  });
}

ErrorCode readValue(const Key& key, std::string_view name,
                    const std::function<void(ValueType, std::string_view)>& reader) {
  return reading([&](Transaction& view) {
    ValueRecord record{};
    const ErrorCode error = findValue(view, key, name, record);
    if (error == kSuccess) reader(record.type, record.data);
    return error;
  });
}

ErrorCode setValue(const Key& key, std::string_view name, ValueType type, std::string_view data) {
  if (!isValid(type, data)) return fail(kInvalidParameter);
  return writing([&](WriteTransaction& transaction) {
    ValueRecord record{};
    ErrorCode error = findValue(transaction, key, name, record);
    if (error == kFileNotFound) {
      record.name = name;
      error = transaction.nextNumber(record.sequence);
    }
    if (error != kSuccess) return error;
    record.type = type;
    record.data = data;
    StoreName stored = StoreName::valuesOf(KeyAccess::id(key));
    error = stored.appendValueName(name);
    return error == kSuccess ? transaction.put(stored.bytes(), record.encode()) : error;
  });
}

ErrorCode deleteValue(const Key& key, std::string_view name) {
  return writing([&](WriteTransaction& transaction) {
    ValueRecord record{};
    ErrorCode error = findValue(transaction, key, name, record);
    StoreName stored = StoreName::valuesOf(KeyAccess::id(key));
    if (error == kSuccess) error = stored.appendValueName(name);
    return error == kSuccess ? transaction.erase(stored.bytes()) : error;
  });
}

ErrorCode listSubkeys(const Key& key, std::size_t limit, std::vector<std::string>& names) {
  names.clear();
  return reading([&](Transaction& view) {
    StoreName below;
    ErrorCode error = nameOf(view, key, below);
    if (error != kSuccess) return error;
    below.appendSeparator();
    Cursor cursor(view, error);
    if (error != kSuccess) return error;
    Cursor::Entry entry;
    error = cursor.seek(below.bytes(), entry);
    while (error == kSuccess && names.size() < limit && entry.name.starts_with(below.bytes())) {
      KeyRecord record{};
      error = KeyRecord::decode(entry.bytes, record);
      if (error != kSuccess) break;
      names.emplace_back(record.name);
      // Over everything below the subkey, to its next sibling.
      StoreName next = StoreName::copyOf(entry.name);
      next.appendSeparator();
      next.skipPrefix();
      error = cursor.seek(next.bytes(), entry);
    }
    return error == kNoMoreItems ? kSuccess : error;
  });
}

ErrorCode forEachValue(const Key& key,
                       const std::function<void(std::string_view, ValueType, std::string_view)>& reader) {
  return reading([&](Transaction& view) {
    ErrorCode error = checkExists(view, key);
    if (error != kSuccess) return error;
    Cursor cursor(view, error);
    if (error != kSuccess) return error;
    std::vector<ValueRecord> records;
    const StoreName values = StoreName::valuesOf(KeyAccess::id(key));
    error = forEachEntry(cursor, values.bytes(), [&](const Cursor::Entry& entry) {
      return ValueRecord::decode(entry.bytes, records.emplace_back());
    });
    if (error != kSuccess) return error;
    // Sorting places is cheaper than sorting records.
    std::vector<std::pair<std::uint64_t, std::size_t>> order;
    order.reserve(records.size());
    for (const ValueRecord& record : records) order.emplace_back(record.sequence, order.size());
    std::sort(order.begin(), order.end());
    for (const auto& [sequence, place] : order) {
      reader(records[place].name, records[place].type, records[place].data);
    }
    return kSuccess;
  });
}

ErrorCode transaction(const std::function<ErrorCode()>& changes) {
  return writing([&](WriteTransaction&) { return changes(); });
}

std::string lastFailure() { return lastStoreFailure(); }

}  // namespace qvn::platform::registry
