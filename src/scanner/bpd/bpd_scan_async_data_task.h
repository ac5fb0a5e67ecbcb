// BpdScanAsyncDataTask: what a Bpd scanner delivers, sorted and passed to the clients that registered for it.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

#include "common/clients/callback_registry.h"
#include "common/tasks/task.h"
#include "device/client_registration.h"
#include "qvn/qvn.h"
#include "qvn/transport/data.h"
#include "qvn/transport/observer.h"
#include "scanner/bpd/scan_block.h"

namespace qvn {

class BpdScanner;
struct StoreNotification;

// The bits of a client's mask, and of what it is called for.
namespace scan_data {
inline constexpr std::uint32_t kData = 0x1000;    // the bytes of a page
inline constexpr std::uint32_t kAlert = 0x2000;   // how the job goes on
inline constexpr std::uint32_t kDetail = 0x4000;  // what else the device tells
}  // namespace scan_data

// One per scanner, never executed. Clients are called one after the other, under the scanner's notify lock.
class BpdScanAsyncDataTask : public Task, public Observer {
 public:
  explicit BpdScanAsyncDataTask(BpdScanner& scanner) : scanner_(scanner) {}
  ~BpdScanAsyncDataTask() override;

  // 0, or 87 for a client that is registered: it stays as it is. The task is attached to the scanner while
  // there are clients.
  std::uint32_t registerClient(std::uint32_t clientId, std::uint32_t mask, QvnScanDataCallback callback);
  // Always 0. A call of the client may still be running.
  std::uint32_t unregisterClient(std::uint32_t clientId);
  void unregisterAll();
  // Returns when no call of the client, or with 0 of any, is running that was unregistered; at once inside a
  // callback.
  void waitForCalls(std::uint32_t clientId);
  // Whether the task is not attached.
  void registrationNeeded(bool needed) { detached_ = needed; }

  void startJob(std::uint32_t clientId);
  // The job counts as ended when the device has told its end both in the data and as the state of the job.
  void endJob();
  bool jobHasEnded() const;

  void updateClients(Data& data);
  void handleScanDataCallbacks(const std::uint8_t* body, std::uint32_t length);
  // To the clients that want alerts of one of the kinds, once for each kind.
  void doScanAlertCallbacks(std::uint32_t bits, const std::string& text);

 protected:
  using Observer::doUpdate;
  void doUpdate(Data& data) override { updateClients(data); }

 private:
  struct Job {
    bool endSeen = false;
    bool completeSeen = false;
    std::uint32_t bytes = 0;
    std::uint32_t blocks = 0;
    std::uint32_t clientId = 0;
    bool hasEnded() const { return endSeen && completeSeen; }
  };

  void takeScanData(std::string_view body);
  void takeDocument(std::string_view document);
  void takeNotification(const StoreNotification& notification);
  void alertIfScanning(const char* text);
  // Notes a sign of the job's end; true when the job has ended by now.
  bool noteEnd(bool Job::*sign);

  // Attaches or detaches, as there are clients.
  void settle();
  // Calls the clients that want the kind, in the order of their ids; false when there is none.
  template <typename Returned>
  bool callClients(std::uint32_t bit, const std::uint8_t* data, std::uint32_t length, Returned&& returned);

  BpdScanner& scanner_;
  std::atomic<bool> detached_{true};

  mutable std::mutex jobLock_;  // guards the job
  Job job_;

  CallbackRegistry<AsyncDataRegistration> clients_{{}};
  std::mutex attachingMutex_;  // guards attaching and detaching
};

}  // namespace qvn
