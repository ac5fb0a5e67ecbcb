// JobParameterStore: the parameters that clients have set for their next scan jobs.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

#include "common/process_service.h"

namespace qvn {

// The parameters are the client's, whatever scanner it uses, and are kept as one text: a flat run of
// elements, each with its value under a tag that names its key. Any thread.
class JobParameterStore : public ProcessService<JobParameterStore> {
 public:
  // Sets or replaces one. 0, or 87 for a key or value that would not be read back from the text (a key that
  // is no tag, a value with "<" or "&") and would take the other parameters with it.
  std::uint32_t setJobParameter(std::uint32_t clientId, const std::string& key, const std::string& value);

  // The number that the value begins with, read as unsigned decimal; 0 when there is none.
  std::uint32_t getJobParameter(std::uint32_t clientId, std::string_view key) const;

  // All of them by key.
  std::map<std::string, std::string, std::less<>> getJobParameters(std::uint32_t clientId) const;

  void clearJobParameters(std::uint32_t clientId);

 private:
  friend class ProcessService<JobParameterStore>;
  JobParameterStore() = default;
  ~JobParameterStore() = default;

  mutable std::mutex mutex_;  // guards the texts
  std::map<std::uint32_t, std::string> texts_;
};

}  // namespace qvn
