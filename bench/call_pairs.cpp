// Exported calls that touch no device, against one bare read of the database that the registry lies in.
#include <lmdb.h>

#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "measure.h"
#include "pairs.h"
#include "qvn/qvn.h"
#include "qvn/transport/attributes.h"

namespace qvn::bench {
namespace {

constexpr int kRounds = 101;
constexpr std::uint32_t kCallsPerRound = 2000;

constexpr std::uint32_t kFirstStored = 1000;
constexpr std::uint32_t kStored = 10000;
constexpr std::size_t kTextSize = 1536;
// Walks over all stored printers without any order that a cache could follow.
constexpr std::uint32_t kStride = 3793;

void check(int error) {
  if (error != 0) throw std::runtime_error(mdb_strerror(error));
}

// A database with as many entries of the same size, read the cheapest way that there is: one transaction
// renewed and reset for each look-up.
class BareDatabase {
 public:
  BareDatabase() : directory_(std::filesystem::temp_directory_path() / "qvn-bench-bare") {
    std::filesystem::remove_all(directory_);
    std::filesystem::create_directories(directory_);
    check(mdb_env_create(&environment_));
    check(mdb_env_set_mapsize(environment_, std::size_t{1} << 30));
    check(mdb_env_open(environment_, directory_.c_str(), MDB_NOTLS, 0600));
    fill();
    check(mdb_txn_begin(environment_, nullptr, MDB_RDONLY, &reader_));
    mdb_txn_reset(reader_);
  }
  ~BareDatabase() {
    mdb_txn_abort(reader_);
    mdb_env_close(environment_);
    std::error_code ignored;
    std::filesystem::remove_all(directory_, ignored);
  }
  BareDatabase(const BareDatabase&) = delete;
  BareDatabase& operator=(const BareDatabase&) = delete;

  void read(std::uint32_t entry) {
    Name name = nameOf(entry);
    MDB_val key{name.size, name.bytes};
    MDB_val data{};
    check(mdb_txn_renew(reader_));
    check(mdb_get(reader_, map_, &key, &data));
    mdb_txn_reset(reader_);
  }

 private:
  struct Name {
    char bytes[24];
    std::size_t size;
  };
  static Name nameOf(std::uint32_t entry) {
    Name name;
    name.size = static_cast<std::size_t>(std::snprintf(name.bytes, sizeof name.bytes, "printers-%u", entry));
    return name;
  }

  void fill() {
    MDB_txn* transaction = nullptr;
    check(mdb_txn_begin(environment_, nullptr, 0, &transaction));
    check(mdb_dbi_open(transaction, nullptr, 0, &map_));
    std::string text(kTextSize, 'n');
    for (std::uint32_t entry = 0; entry < kStored; ++entry) {
      Name name = nameOf(entry);
      MDB_val key{name.size, name.bytes};
      MDB_val data{text.size(), text.data()};
      check(mdb_put(transaction, map_, &key, &data, 0));
    }
    check(mdb_txn_commit(transaction));
  }

  std::filesystem::path directory_;
  MDB_env* environment_ = nullptr;
  MDB_dbi map_ = 0;
  MDB_txn* reader_ = nullptr;
};

// Gives the stored printers' numbers, 0 to kStored - 1, over and over.
class Walk {
 public:
  std::uint32_t next() { return position_ = (position_ + kStride) % kStored; }

 private:
  std::uint32_t position_ = 0;
};

}  // namespace

void measureCalls(const Installation& installation, RatioTable& table) {
  installation.storePrinters(kFirstStored, kStored, kTextSize);
  BareDatabase bare;

  // The same entries every time on both sides.
  table.atMost(
      "call: QvnSuspend, logging off / bare database read",
      medianRatio(
          kRounds, [] { return timeOf(kCallsPerRound, [] { require(QvnSuspend(), "QvnSuspend"); }); },
          [&] { return timeOf(kCallsPerRound, [&] { bare.read(kStored / 2); }); }),
      6);

  // Another entry every time on both sides.
  Walk walk;
  Walk bareWalk;
  const auto getHandle = [&] {
    const std::uint32_t handle = kFirstStored + walk.next();
    std::uint32_t value = 0;
    require(QvnGetLongPrinter(installation.client(), handle, attribute::kHandle, &value),
            "QvnGetLongPrinter");
    if (value != handle) throw std::runtime_error("QvnGetLongPrinter gave another printer's value");
  };
  table.atMost("call: QvnGetLongPrinter, 10,000 stored printers / bare database read",
               medianRatio(
                   kRounds, [&] { return timeOf(kCallsPerRound, getHandle); },
                   [&] { return timeOf(kCallsPerRound, [&] { bare.read(bareWalk.next()); }); }),
               12);
}

}  // namespace qvn::bench
