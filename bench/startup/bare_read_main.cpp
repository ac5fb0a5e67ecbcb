// The least that a program has to do for a stored printer's bytes: opens the registry's file with LMDB alone,
// finds the key that holds the printers and copies one value of it, tells so, waits for the go and ends.
// usage: bare_read FILE KEY VALUE, the value's name being the handle in decimal
#include <lmdb.h>

#include <string>
#include <string_view>

#include "platform/registry/registry_path.h"
#include "platform/registry/registry_record.h"
#include "startup/progress.h"

namespace {

namespace registry = qvn::platform::registry;

bool get(MDB_txn* transaction, MDB_dbi map, const registry::StoreName& name, std::string_view& bytes) {
  MDB_val key{name.bytes().size(), const_cast<char*>(name.bytes().data())};
  MDB_val data{};
  if (mdb_get(transaction, map, &key, &data) != 0) return false;
  bytes = {static_cast<const char*>(data.mv_data), data.mv_size};
  return true;
}

bool read(const char* file, const char* keyPath, const char* valueName, std::string& text) {
  // As the registry opens it, but for writing.
  MDB_env* environment = nullptr;
  if (mdb_env_create(&environment) != 0 || mdb_env_set_mapsize(environment, std::size_t{1} << 30) != 0 ||
      mdb_env_open(environment, file, MDB_RDONLY | MDB_NOSUBDIR | MDB_NOTLS, 0600) != 0) {
    return false;
  }
  MDB_txn* transaction = nullptr;
  MDB_dbi map = 0;
  if (mdb_txn_begin(environment, nullptr, MDB_RDONLY, &transaction) != 0 ||
      mdb_dbi_open(transaction, nullptr, 0, &map) != 0) {
    return false;
  }
  std::string_view bytes;
  registry::StoreName name = registry::StoreName::root(registry::Hive::LocalMachine);
  registry::KeyRecord key{};
  if (name.appendPath(keyPath) != 0 || !get(transaction, map, name, bytes) ||
      registry::KeyRecord::decode(bytes, key) != 0) {
    return false;
  }
  name = registry::StoreName::valuesOf(key.id);
  registry::ValueRecord value{};
  if (name.appendValueName(valueName) != 0 || !get(transaction, map, name, bytes) ||
      registry::ValueRecord::decode(bytes, value) != 0) {
    return false;
  }
  text = value.data;
  mdb_txn_reset(transaction);
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  std::string text;
  if (argc != 4 || !read(argv[1], argv[2], argv[3], text) || text.empty() || !qvn::bench::tell()) return 1;
  qvn::bench::waitForGo();
  return 0;
}
