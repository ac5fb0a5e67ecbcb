// Keeps finished print jobs: the data as job-<id>.prn and, beside it, a record as job-<id>.json.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

#include "base/bytes.h"

namespace sim {

enum class JobOutcome : std::uint8_t { Complete, Cancelled, Lost };

struct JobRecord {
  std::uint16_t id = 0;
  std::chrono::system_clock::time_point started;
  std::chrono::system_clock::time_point ended;
  std::uint64_t bytes = 0;
  JobOutcome outcome = JobOutcome::Lost;
  std::string name;   // what a name command said about the job
  std::string error;  // why the data could not be stored, if so
};

// The record as one line of JSON.
std::string toJson(const JobRecord& record);

// One job is open at a time.
class JobStore {
 public:
  // Without a directory nothing is kept; without `keepData` only the records are.
  JobStore(std::filesystem::path directory, bool keepData);

  // Above every job that the directory holds; never 0.
  std::uint16_t newId();
  bool wasIssued(std::uint16_t id) const { return id != 0 && id <= lastId_ && id >= firstId_; }
  std::uint16_t lastIssued() const { return lastId_ >= firstId_ ? lastId_ : std::uint16_t{0}; }

  void open(std::uint16_t id);
  void write(ByteView data);

  // Closes the open job: a cancelled one loses its data. The record appears at once and complete, after the
  // data. `record.error` is set when the disk did not take it all.
  void close(JobRecord& record);

 private:
  std::filesystem::path file(std::uint16_t id, const char* extension) const;

  std::filesystem::path directory_;
  bool keepData_;
  std::uint16_t firstId_ = 1;
  std::uint16_t lastId_ = 0;
  std::ofstream data_;
};

}  // namespace sim
