#include "peers/bare_database.h"

#include <cstdio>
#include <stdexcept>

namespace qvn::bench {
namespace {

void check(int error) {
  if (error != 0) throw std::runtime_error(mdb_strerror(error));
}

struct Name {
  explicit Name(std::uint32_t entry)
      : size(static_cast<std::size_t>(std::snprintf(bytes, sizeof bytes, "printers-%u", entry))) {}
  char bytes[24];
  std::size_t size;
};

}  // namespace

BareDatabase::BareDatabase(std::uint32_t entries, std::size_t textSize)
    : directory_(std::filesystem::temp_directory_path() / "qvn-bench-bare") {
  std::filesystem::remove_all(directory_);
  std::filesystem::create_directories(directory_);
  check(mdb_env_create(&environment_));
  check(mdb_env_set_mapsize(environment_, std::size_t{1} << 30));
  check(mdb_env_open(environment_, directory_.c_str(), MDB_NOTLS, 0600));
  fill(entries, textSize);
  check(mdb_txn_begin(environment_, nullptr, MDB_RDONLY, &reader_));
  mdb_txn_reset(reader_);
}

BareDatabase::~BareDatabase() {
  mdb_txn_abort(reader_);
  mdb_env_close(environment_);
  std::error_code ignored;
  std::filesystem::remove_all(directory_, ignored);
}

void BareDatabase::read(std::uint32_t entry) {
  Name name(entry);
  MDB_val key{name.size, name.bytes};
  MDB_val data{};
  check(mdb_txn_renew(reader_));
  check(mdb_get(reader_, map_, &key, &data));
  mdb_txn_reset(reader_);
}

void BareDatabase::copyAll(std::vector<std::string>& texts) {
  texts.clear();
  check(mdb_txn_renew(reader_));
  MDB_cursor* cursor = nullptr;
  check(mdb_cursor_open(reader_, map_, &cursor));
  MDB_val key{};
  MDB_val data{};
  while (mdb_cursor_get(cursor, &key, &data, MDB_NEXT) == 0) {
    texts.emplace_back(static_cast<const char*>(data.mv_data), data.mv_size);
  }
  mdb_cursor_close(cursor);
  mdb_txn_reset(reader_);
}

void BareDatabase::fill(std::uint32_t entries, std::size_t textSize) {
  MDB_txn* transaction = nullptr;
  check(mdb_txn_begin(environment_, nullptr, 0, &transaction));
  check(mdb_dbi_open(transaction, nullptr, 0, &map_));
  std::string text(textSize, 'n');
  for (std::uint32_t entry = 0; entry < entries; ++entry) {
    Name name(entry);
    MDB_val key{name.size, name.bytes};
    MDB_val data{text.size(), text.data()};
    check(mdb_put(transaction, map_, &key, &data, 0));
  }
  check(mdb_txn_commit(transaction));
}

}  // namespace qvn::bench
