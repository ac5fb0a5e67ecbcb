#include "print/job_store.h"

#include <time.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "base/json_line.h"
#include "base/numbered_files.h"

namespace sim {
namespace {

std::string iso8601(std::chrono::system_clock::time_point moment) {
  const auto sinceEpoch =
      std::chrono::duration_cast<std::chrono::milliseconds>(moment.time_since_epoch()).count();
  const time_t seconds = static_cast<time_t>(sinceEpoch / 1000);
  tm parts{};
  gmtime_r(&seconds, &parts);
  char text[32];
  strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
  const std::string milliseconds = std::to_string(1000 + sinceEpoch % 1000).substr(1);
  return std::string(text) + "." + milliseconds + "Z";
}

const char* toText(JobOutcome outcome) {
  switch (outcome) {
    case JobOutcome::Complete:
      return "complete";
    case JobOutcome::Cancelled:
      return "cancelled";
    case JobOutcome::Lost:
      return "lost";
  }
  return "";
}

}  // namespace

std::string toJson(const JobRecord& record) {
  std::vector<JsonField> fields = {{"id", record.id},
                                   {"started", iso8601(record.started)},
                                   {"ended", iso8601(record.ended)},
                                   {"bytes", record.bytes},
                                   {"outcome", std::string(toText(record.outcome))}};
  if (!record.name.empty()) fields.emplace_back("name", record.name);
  if (!record.error.empty()) fields.emplace_back("error", record.error);
  return jsonLine(fields);
}

JobStore::JobStore(std::filesystem::path directory, bool keepData)
    : directory_(std::move(directory)), keepData_(keepData && !directory_.empty()) {
  if (directory_.empty()) return;
  std::filesystem::create_directories(directory_);
  const std::uint64_t highest = highestNumber(directory_, "job-");
  lastId_ = static_cast<std::uint16_t>(std::min<std::uint64_t>(highest, 0xFFFE));
  firstId_ = static_cast<std::uint16_t>(lastId_ + 1);
}

std::uint16_t JobStore::newId() {
  if (lastId_ == 0xFFFF) {  // the field of the protocol is full: begin again
    firstId_ = 1;
    lastId_ = 0;
  }
  return ++lastId_;
}

void JobStore::open(std::uint16_t id) {
  if (keepData_) data_.open(file(id, ".prn"), std::ios::binary | std::ios::trunc);
}

void JobStore::write(ByteView data) {
  if (keepData_ && data_) {
    data_.write(reinterpret_cast<const char*>(data.data()), static_cast<std::streamsize>(data.size()));
  }
}

void JobStore::close(JobRecord& record) {
  if (directory_.empty()) return;
  if (keepData_) {
    if (data_.is_open()) data_.close();
    if (data_.fail()) record.error = "the data could not be stored";
    data_ = std::ofstream();
    std::error_code ignored;
    if (record.outcome == JobOutcome::Cancelled) std::filesystem::remove(file(record.id, ".prn"), ignored);
  }
  const std::filesystem::path unfinished = file(record.id, ".json.part");
  std::ofstream json(unfinished, std::ios::trunc);
  json << toJson(record) << '\n';
  json.close();
  std::error_code renamed;
  std::filesystem::rename(unfinished, file(record.id, ".json"), renamed);
  if (json.fail() || renamed) record.error = "the record could not be stored";
}

std::filesystem::path JobStore::file(std::uint16_t id, const char* extension) const {
  return directory_ / ("job-" + std::to_string(id) + extension);
}

}  // namespace sim
