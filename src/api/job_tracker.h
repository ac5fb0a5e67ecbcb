// JobTracker: lets a client cancel a print job from another thread while the job's writes run.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>

#include "common/process_service.h"
#include "qvn/transport/critical_section.h"

namespace qvn {

// An entry exists from a job's start to its end. The cancel only marks it; the client's writing thread looks
// at the mark after its write.
class JobTracker : public ProcessService<JobTracker> {
 public:
  using CancelFlag = std::shared_ptr<std::atomic<bool>>;

  // Keeps the entry that the printer has.
  void add(std::uint32_t printerHandle);
  void remove(std::uint32_t printerHandle);
  // Marks the entry; false when there is none.
  bool requestCancel(std::uint32_t printerHandle);
  // Null when there is no entry.
  CancelFlag find(std::uint32_t printerHandle);

 private:
  friend class ProcessService<JobTracker>;
  JobTracker() = default;
  ~JobTracker() = default;

  CriticalSection lock_;
  std::map<std::uint32_t, CancelFlag> jobs_;
};

}  // namespace qvn
