// Mwo: the buffered writer of a printer. A client's data is copied into a queue and reported as written at
// once; a thread of the printer writes the queue out.
#pragma once

#include <atomic>
#include <cstdint>
#include <list>
#include <memory>

#include "common/settings/setting_table.h"
#include "common/threads/event.h"
#include "common/threads/runnable.h"
#include "common/threads/thread.h"
#include "qvn/transport/critical_section.h"
#include "qvn/transport/data.h"

namespace qvn {

class Printer;

// How many buffers may wait: above the high mark clients are slowed down, for as long as the printer needs to
// come down to the low mark. Aligned so that both are read and replaced at once.
struct alignas(std::uint64_t) MwoLimits {
  std::uint32_t highWaterMark = setting::kMwoBufferHwm.byDefault;
  std::uint32_t lowWaterMark = setting::kMwoBufferLwm.byDefault;
};

// Between two jobs there is no thread and the queue is empty: a job's data ends with the job.
class Mwo {
 public:
  // Reads the limits from the settings; they are the process's, the printer is this writer's.
  explicit Mwo(Printer& printer);
  Mwo(const Mwo&) = delete;
  Mwo& operator=(const Mwo&) = delete;
  ~Mwo();

  // A job begins: until the next stop, data is queued.
  void begin();

  // Takes a client's data. The first request ever, and what comes when no job has begun, is written at once
  // on the caller's thread. Nothing is taken and the count is 0 when the queue stays above the high mark for
  // one wait time (122) and while the last of a job is written out (1): the queued data must not be
  // overtaken.
  std::uint32_t print(Data& request);

  // From now on what is queued is thrown away; until the next stop. Always 0.
  std::uint32_t purge();

  // The same for good, and nothing is taken any more: nobody is left to end the job. Waits for nothing.
  void abandon();

  // Ends the job: waits until the queue is written out or thrown away and the thread has ended. Not from the
  // writer's thread.
  void stop();

  // The job is to be cancelled: the printer is told so by the writer's thread, once, between two writes of
  // the data that a stop waits for. Waits for nothing.
  void requestCancel();

  // How long a client is slowed down, in milliseconds.
  std::uint32_t waitTime() const;
  static MwoLimits limits();

 private:
  enum class Phase { NoJob, Taking, Ending };
  // The thread and what it runs.
  struct Writer {
    explicit Writer(Mwo& mwo) : runnable(mwo, &Mwo::write), thread(runnable) {}
    MethodRunnable<Mwo> runnable;
    Thread thread;
  };
  // What the thread does next.
  struct Step {
    Data* oldest;  // null when the queue is empty
    bool ending;
  };

  // The writer thread's body.
  std::uint32_t write();
  Step next();
  void writeOldest(Data& buffer);
  void cancel();
  void removeOldest();
  // Queues a copy in phase Taking and answers the phase: NoJob also when the thread cannot be made.
  Phase queue(const Data& request, std::uint32_t& count);
  void endThread();
  std::uint32_t queueSize();

  Printer& printer_;
  // Guards the next three; held neither during a write nor during a sleep. The oldest buffer is taken off by
  // the writer's thread alone, which writes it without the lock.
  CriticalSection lock_;
  Phase phase_ = Phase::NoJob;
  std::list<Data> queue_;
  std::shared_ptr<Writer> writer_;
  std::atomic<bool> purge_{false};
  std::atomic<bool> cancelRequested_{false};
  Event wakeEvent_;
  std::atomic<bool> firstRequest_{true};
  std::atomic<bool> firstSignalPending_{true};
  std::atomic<std::uint32_t> lastWriteTime_{1000};
};

}  // namespace qvn
