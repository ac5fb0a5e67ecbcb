#include "print/job_queue.h"

#include <algorithm>
#include <utility>

namespace sim {
namespace {

constexpr std::size_t kRememberedJobs = 256;

std::size_t zerosAtEnd(ByteView data) {
  const auto lastOther =
      std::find_if(data.rbegin(), data.rend(), [](std::uint8_t byte) { return byte != 0; });
  return static_cast<std::size_t>(lastOther - data.rbegin());
}

}  // namespace

JobQueue::JobQueue(JobStore& store, const FaultSwitches& faults, JobEnding ending,
                   std::chrono::milliseconds printTime, std::uint64_t cancelRun, Events events)
    : store_(store),
      faults_(faults),
      ending_(ending),
      printTime_(printTime),
      cancelRun_(cancelRun),
      events_(std::move(events)),
      scanner_([this](ByteView data) { receiveData(data); }, [this] { receiveMarker(); }) {}

std::uint16_t JobQueue::start() {
  if (current_ && current_->cancelSeen) endCurrent(JobOutcome::Cancelled);
  if (endsInSilence()) drained();  // the host has no more data for a job when it begins the next one
  waiting_.push_back(makeJob());
  return waiting_.back().record.id;
}

void JobQueue::setName(std::uint16_t id, std::string name) {
  if (Job* job = find(id)) job->record.name = std::move(name);
}

bool JobQueue::announceEnd(std::uint16_t id) {
  if (Job* job = find(id)) {
    job->endAnnounced = true;
    return true;
  }
  return store_.wasIssued(id);
}

void JobQueue::abandon(std::uint16_t id) {
  const auto job = std::find_if(waiting_.begin(), waiting_.end(),
                                [id](const Job& waiting) { return waiting.record.id == id; });
  if (job == waiting_.end() || job->endAnnounced) return;
  end(*job, JobOutcome::Lost);
  waiting_.erase(job);
}

bool JobQueue::isPrinted(std::uint16_t id) const {
  if (faults_.neverFinish()) return false;
  if (id == 0 && (current_ || !waiting_.empty())) return false;
  const std::uint16_t asked = id != 0 ? id : store_.lastIssued();
  if (asked == 0) return true;
  const auto job = ended_.find(asked);
  return job != ended_.end() && job->second.outcome != JobOutcome::Lost &&
         std::chrono::steady_clock::now() - job->second.when >= printTime_;
}

void JobQueue::receive(ByteView bytes) {
  if (ending_ == JobEnding::WithConnection) {
    receiveData(bytes);
  } else {
    scanner_.add(bytes);
  }
}

void JobQueue::drained() {
  if (ending_ == JobEnding::WithConnection) {
    if (current_ && current_->endAnnounced) endCurrent(JobOutcome::Complete);
  } else if (current_ && !current_->cancelSeen && current_->trailingZeros >= cancelRun_) {
    current_->cancelSeen = true;
    events_.onCancelSeen();
  }
  if (current_ && current_->cancelSeen && current_->endAnnounced) endCurrent(JobOutcome::Cancelled);
  while (!current_ && !waiting_.empty() && waiting_.front().endAnnounced) {  // a job without any data
    beginCurrent();
    endCurrent(JobOutcome::Complete);
  }
}

void JobQueue::connectionEnded() {
  endConnection(ending_ == JobEnding::WithConnection ? JobOutcome::Complete : JobOutcome::Lost);
}

void JobQueue::connectionBroke() { endConnection(JobOutcome::Lost); }

bool JobQueue::endsInSilence() const {
  if (ending_ != JobEnding::WithConnection) return false;
  return current_ ? current_->endAnnounced : !waiting_.empty() && waiting_.front().endAnnounced;
}

void JobQueue::endConnection(JobOutcome outcome) {
  scanner_.finish();
  if (current_) endCurrent(current_->cancelSeen ? JobOutcome::Cancelled : outcome);
  skippingZeros_ = false;
}

void JobQueue::closeAll() {
  connectionBroke();
  while (!waiting_.empty()) {
    end(waiting_.front(), JobOutcome::Lost);
    waiting_.pop_front();
  }
}

JobQueue::Job JobQueue::makeJob() {
  Job job;
  job.record.id = store_.newId();
  job.record.started = std::chrono::system_clock::now();
  return job;
}

JobQueue::Job* JobQueue::find(std::uint16_t id) {
  if (current_ && current_->record.id == id) return &*current_;
  for (Job& job : waiting_) {
    if (job.record.id == id) return &job;
  }
  return nullptr;
}

void JobQueue::beginCurrent() {
  if (waiting_.empty()) {
    current_ = makeJob();
  } else {
    current_ = std::move(waiting_.front());
    waiting_.pop_front();
  }
  store_.open(current_->record.id);
  events_.onBegun();
}

void JobQueue::receiveData(ByteView data) {
  if (!current_) {
    if (skippingZeros_) {
      const auto first = std::find_if(data.begin(), data.end(), [](std::uint8_t byte) { return byte != 0; });
      data = ByteView(first, data.end());
      if (data.empty()) return;
      skippingZeros_ = false;
    }
    beginCurrent();
  }
  store_.write(data);
  current_->record.bytes += data.size();
  const std::size_t zeros = zerosAtEnd(data);
  if (zeros == data.size()) {
    current_->trailingZeros += zeros;
  } else {
    current_->trailingZeros = zeros;
    current_->cancelSeen = false;  // the zero bytes were part of the job
  }
}

void JobQueue::receiveMarker() {
  if (!current_) {
    if (waiting_.empty()) return;  // a marker alone is no job
    beginCurrent();
  }
  endCurrent(JobOutcome::Complete);
}

void JobQueue::endCurrent(JobOutcome outcome) {
  Job job = std::move(*current_);
  current_.reset();
  if (outcome == JobOutcome::Cancelled) {
    job.record.bytes -= job.trailingZeros;
    skippingZeros_ = true;
  }
  end(job, outcome);
}

void JobQueue::end(Job& job, JobOutcome outcome) {
  job.record.outcome = outcome;
  job.record.ended = std::chrono::system_clock::now();
  store_.close(job.record);
  ended_[job.record.id] = {outcome, std::chrono::steady_clock::now()};
  if (ended_.size() > kRememberedJobs) ended_.erase(ended_.begin());
  events_.onEnded(job.record);
}

}  // namespace sim
