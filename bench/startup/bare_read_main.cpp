// The least that a program has to do for a stored printer's bytes: opens the registry's file with LMDB alone,
// finds the key that holds the printers and copies one value of it, tells so, waits for the go, reads the
// value as many times more as it is told to, tells so and ends.
//
// usage: bare_read FILE KEY VALUE CALLS, the value's name being the handle in decimal
#include <lmdb.h>

#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/registry/registry_path.h"
#include "platform/registry/registry_record.h"
#include "startup/progress.h"

namespace {

namespace registry = qvn::platform::registry;

class Database {
 public:
  // As the registry opens it, but for writing.
  bool open(const char* file) {
    return mdb_env_create(&environment_) == 0 &&
           mdb_env_set_mapsize(environment_, std::size_t{1} << 30) == 0 &&
           mdb_env_open(environment_, file, MDB_RDONLY | MDB_NOSUBDIR | MDB_NOTLS, 0600) == 0 &&
           mdb_txn_begin(environment_, nullptr, MDB_RDONLY, &reader_) == 0 &&
           mdb_dbi_open(reader_, nullptr, 0, &map_) == 0;
  }

  // The bytes stay valid until the next renewal.
  bool get(const registry::StoreName& name, std::string_view& bytes) {
    MDB_val key{name.bytes().size(), const_cast<char*>(name.bytes().data())};
    MDB_val data{};
    if (mdb_get(reader_, map_, &key, &data) != 0) return false;
    bytes = {static_cast<const char*>(data.mv_data), data.mv_size};
    return true;
  }

  bool renew() {
    mdb_txn_reset(reader_);
    return mdb_txn_renew(reader_) == 0;
  }

 private:
  MDB_env* environment_ = nullptr;
  MDB_txn* reader_ = nullptr;
  MDB_dbi map_ = 0;
};

// The name in the store of a value of that key.
bool findName(Database& database, const char* key, const char* value, registry::StoreName& name) {
  std::string_view bytes;
  registry::KeyRecord record{};
  name = registry::StoreName::root(registry::Hive::LocalMachine);
  if (name.appendPath(key) != 0 || !database.get(name, bytes)) return false;
  if (registry::KeyRecord::decode(bytes, record) != 0) return false;
  name = registry::StoreName::valuesOf(record.id);
  return name.appendValueName(value) == 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) return 2;
  const unsigned long calls = std::strtoul(argv[4], nullptr, 10);
  Database database;
  registry::StoreName name;
  registry::ValueRecord value{};
  std::string_view bytes;
  if (!database.open(argv[1]) || !findName(database, argv[2], argv[3], name) || !database.get(name, bytes) ||
      registry::ValueRecord::decode(bytes, value) != 0) {
    return 1;
  }
  const std::string text(value.data);
  if (text.empty() || !qvn::bench::tell()) return 1;
  qvn::bench::waitForGo();
  for (unsigned long call = 0; call < calls; ++call) {
    if (!database.renew() || !database.get(name, bytes)) return 1;
  }
  return qvn::bench::tell() ? 0 : 1;
}
