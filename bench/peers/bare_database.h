// The database that the registry lies in, read the cheapest way that there is: what calls on stored devices
// are measured against.
#pragma once

#include <lmdb.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace qvn::bench {

class BareDatabase {
 public:
  // With so many entries of so many bytes each.
  BareDatabase(std::uint32_t entries, std::size_t textSize);
  ~BareDatabase();
  BareDatabase(const BareDatabase&) = delete;
  BareDatabase& operator=(const BareDatabase&) = delete;

  // Looks one entry up, in a transaction renewed and reset for it.
  void read(std::uint32_t entry);
  // Walks all entries and copies each text.
  void copyAll(std::vector<std::string>& texts);

 private:
  void fill(std::uint32_t entries, std::size_t textSize);

  std::filesystem::path directory_;
  MDB_env* environment_ = nullptr;
  MDB_dbi map_ = 0;
  MDB_txn* reader_ = nullptr;
};

}  // namespace qvn::bench
