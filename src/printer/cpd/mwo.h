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
// come down to the low mark.
struct MwoLimits {
  std::uint32_t highWaterMark = setting::kMwoBufferHwm.byDefault;
  std::uint32_t lowWaterMark = setting::kMwoBufferLwm.byDefault;
};

class Mwo {
 public:
  // Reads the limits from the settings; they are the process's, the printer is this writer's.
  explicit Mwo(Printer& printer);
  Mwo(const Mwo&) = delete;
  Mwo& operator=(const Mwo&) = delete;
  ~Mwo();

  // Takes a client's data. The first request ever is written at once on the caller's thread. 122, nothing
  // taken, when the queue stays above the high mark for one wait time.
  std::uint32_t print(Data& request);

  // From now on what is queued is thrown away; until the next stop. Always 0.
  std::uint32_t purge();

  // Waits until the queue is written out or thrown away and ends the thread. Not from the writer's thread.
  void stop();

  // How long a client is slowed down, in milliseconds.
  std::uint32_t waitTime() const;
  static MwoLimits limits();

 private:
  // The writer thread's body.
  std::uint32_t write();
  bool startThread();
  void stopThread();
  std::uint32_t queueSize();
  Data* oldest();
  void removeOldest();
  void writeOldest(Data& buffer);
  static void readLimits();

  Printer& printer_;
  std::list<Data> queue_;
  // Guards the queue; held only for list changes, never during a write or a sleep. The oldest buffer is taken
  // off by the writer thread alone, so it may write it without the lock.
  CriticalSection queueLock_;
  std::atomic<bool> purge_{false};
  std::atomic<bool> stop_{false};
  bool threadRunning_ = false;
  // Guards starting and ending the thread.
  CriticalSection threadLock_;
  std::unique_ptr<MethodRunnable<Mwo>> runnable_;
  std::unique_ptr<Thread> thread_;
  Event wakeEvent_;
  std::atomic<bool> firstRequest_{true};
  std::atomic<bool> firstSignalPending_{true};
  std::atomic<std::uint32_t> lastWriteTime_{1000};
};

}  // namespace qvn
