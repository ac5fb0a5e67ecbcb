// BpdScanTask: the base of the tasks that begin and end a job: they send documents to the objects in the
// device and wait for what its system tells them.
#pragma once

#include <string>

#include "common/tasks/task.h"
#include "common/threads/event.h"
#include "platform/base/clock.h"
#include "qvn/transport/data.h"
#include "qvn/transport/observer.h"

namespace qvn {

class BpdScanner;

// The objects that every device has, their methods and events, and who observes them.
namespace scan_object {
inline constexpr char kSystem[] = "system";
inline constexpr char kJobFactory[] = "jobFactory";
inline constexpr char kSystemUpdate[] = "systemUpdate";
inline constexpr char kStateChanged[] = "stateChanged";
inline constexpr char kPageScanned[] = "pageScanned";
inline constexpr char kSystemObserver[] = "Observer_System";
}  // namespace scan_object

class BpdScanTask : public Task, public Observer {
 protected:
  explicit BpdScanTask(BpdScanner& scanner) : scanner_(scanner), event_(false, false, "", false) {}

  // On the thread that delivers: the system tells the observer of its updates a text.
  virtual void takeSystemUpdate(const std::string& text) = 0;

  std::uint32_t leaveHostMode();

  using Observer::doUpdate;
  void doUpdate(Data& data) override;

  BpdScanner& scanner_;
  Event event_;
};

}  // namespace qvn
