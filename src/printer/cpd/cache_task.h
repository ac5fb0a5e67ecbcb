// CacheTask: reads a printer's status cache through the transport's cache channel.
#pragma once

#include <atomic>
#include <mutex>

#include "device/connection.h"
#include "device/printer.h"
#include "printer/job/print_job_task.h"
#include "qvn/transport/data.h"
#include "qvn/transport/observer.h"

namespace qvn {

// Leaves the cache, without its NPA header, in `output`, whose length is the room there is. 1460 when the
// transport took part but no cache arrived.
class CacheTask : public PrintJobTask, public Observer {
 public:
  CacheTask(Printer& printer, const Connection& connection, Data& output)
      : PrintJobTask(printer, connection), output_(output) {}
  ~CacheTask() override = default;

 protected:
  std::uint32_t doExecute() override;
  using Observer::doUpdate;
  void doUpdate(Data& data) override;

 private:
  // Held while what the device sent is looked at: a transport may deliver on several threads at once.
  std::mutex updateMutex_;
  Data& output_;
  std::atomic<bool> received_{false};
};

}  // namespace qvn
