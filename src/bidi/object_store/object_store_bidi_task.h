// ObjectStoreBidiTask: sends one XML document to a device's object store and takes the reply that has its
// request id.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "common/tasks/task.h"
#include "common/threads/runnable.h"
#include "common/threads/thread.h"
#include "device/connection.h"
#include "device/visitor_run.h"
#include "qvn/transport/device.h"
#include "qvn/transport/observer.h"

namespace qvn {

// The exchange runs on a thread of the task's own, while the caller waits (execute) or not
// (executeBackground). Result: 0 with the reply; 87 for an exception, which is the reply then; else the
// transport's code.
class ObjectStoreBidiTask : public Task, public Observer {
 public:
  // `message` is a whole document with that request id. `response` is the caller's and outlives the task; it
  // is the reply once the exchange is over, empty until there is one.
  ObjectStoreBidiTask(Device& device, const Connection& connection, std::uint32_t requestId,
                      std::string message, std::string& response);
  // Ends what still runs.
  ~ObjectStoreBidiTask() override;

  // Begins the exchange and returns 0 at once. What the last one left running is ended first.
  virtual std::uint32_t executeBackground() { return doExecuteBackground(); }

  // Ends the exchange, if there is one: afterwards nothing of it is attached or running. Always 0. How long
  // that takes is the transport's matter (Visitor::cancel).
  std::uint32_t shutdownThread();

  // Whether the calling thread is the one that the exchange runs on: a transport may deliver there.
  bool runsHere() const { return runsOn_ == std::this_thread::get_id(); }

  // Any thread: an exchange that runs or begins later ends as soon as it can. Does not wait for that.
  void cancel();

 protected:
  std::uint32_t doExecute() override;
  virtual std::uint32_t doExecuteBackground();
  using Observer::doUpdate;
  void doUpdate(Data& data) override;

 private:
  std::uint32_t runMethod();
  // Sets the flag, which is guarded, and cancels the visitor that is at work.
  void cancelBecause(bool& reason);
  // Applies the visitor; its result.
  std::uint32_t send(Data& request);

  // Held while what the device sent is looked at: a transport may deliver on several threads at once.
  std::mutex updateMutex_;
  Device& device_;
  const std::uint32_t requestId_;
  std::atomic<bool> isException_{false};
  const std::string message_;
  std::string& response_;
  const Connection& connection_;
  std::unique_ptr<Thread> thread_;
  MethodRunnable<ObjectStoreBidiTask> runnable_;
  std::atomic<bool> running_{false};
  std::atomic<std::thread::id> runsOn_{};  // nobody's while it does not run

  // Guards what follows; cancel() comes from another thread.
  std::mutex cancelLock_;
  VisitorRun* visitorRun_ = nullptr;  // while one is at work
  bool cancelled_ = false;            // by cancel(): for good
  bool ending_ = false;               // by shutdownThread(): until it is over
};

}  // namespace qvn
