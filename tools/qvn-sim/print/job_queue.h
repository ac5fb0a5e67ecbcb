// The print jobs of the device, from their start to the moment they count as printed. It brings together what
// the bidi port says about a job (start, name, end) and what arrives for it on the print port, in whichever
// order the two connections deliver it.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "base/bytes.h"
#include "faults/fault_switches.h"
#include "print/job_store.h"
#include "print/print_data_scanner.h"

namespace sim {

// How the device tells where a job's data ends.
enum class JobEnding : std::uint8_t {
  AtMarker,        // at the end-of-job marker; many zero bytes at the end cancel the job
  WithConnection,  // when the host says so, or ends the connection; every byte is data
};

class JobQueue {
 public:
  struct Events {
    // The host fills a job with zero bytes to have it dropped: acknowledge.
    std::function<void()> onCancelSeen;
    // The first data of a job is here.
    std::function<void()> onBegun;
    std::function<void(const JobRecord&)> onEnded;
  };

  // A job counts as printed `printTime` after it was received. `cancelRun` is how many zero bytes at the end
  // of what was received ask for the job to be dropped.
  JobQueue(JobStore& store, const FaultSwitches& faults, JobEnding ending,
           std::chrono::milliseconds printTime, std::uint64_t cancelRun, Events events);

  // The bidi side. Print data that arrives without a started job makes a job of its own.
  std::uint16_t start();
  void setName(std::uint16_t id, std::string name);
  // False when no such job was ever started.
  bool announceEnd(std::uint16_t id);
  // The connection that started it is gone: without data there will be no job.
  void abandon(std::uint16_t id);
  // Id 0 asks for all jobs.
  bool isPrinted(std::uint16_t id) const;

  // The print side.
  void receive(ByteView bytes);
  // Everything sent so far has been received.
  void drained();
  // The host ended the connection, or it broke.
  void connectionEnded();
  void connectionBroke();
  // Whether it is for the end of the data to show that a job, whose end the host has announced, is complete.
  bool endsInSilence() const;
  std::uint64_t currentBytes() const { return current_ ? current_->record.bytes : 0; }

  // The end of the process: what is open is lost.
  void closeAll();

 private:
  struct Job {
    JobRecord record;
    std::uint64_t trailingZeros = 0;
    bool endAnnounced = false;
    bool cancelSeen = false;
  };
  struct Ended {
    JobOutcome outcome;
    std::chrono::steady_clock::time_point when;
  };

  Job makeJob();
  Job* find(std::uint16_t id);
  void beginCurrent();
  void receiveData(ByteView data);
  void receiveMarker();
  void endConnection(JobOutcome outcome);
  void endCurrent(JobOutcome outcome);
  void end(Job& job, JobOutcome outcome);

  JobStore& store_;
  const FaultSwitches& faults_;
  const JobEnding ending_;
  const std::chrono::milliseconds printTime_;
  const std::uint64_t cancelRun_;
  const Events events_;
  PrintDataScanner scanner_;
  std::deque<Job> waiting_;     // started, without data yet
  std::optional<Job> current_;  // the job whose data is arriving
  bool skippingZeros_ = false;  // the rest of what cancelled a job, not the start of the next one
  std::map<std::uint16_t, Ended> ended_;
};

}  // namespace sim
