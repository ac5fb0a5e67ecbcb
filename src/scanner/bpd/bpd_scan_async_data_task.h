// BpdScanAsyncDataTask: what a Bpd scanner delivers, sorted and passed to the clients that registered for it.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

#include "common/tasks/task.h"
#include "device/client_registration.h"
#include "qvn/qvn.h"
#include "qvn/transport/critical_section.h"
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

// One per scanner, never executed. Clients are called with the lock of the registrations held, which all Bpd
// scanners share: whoever unregisters on another thread is in no callback afterwards.
class BpdScanAsyncDataTask : public Task, public Observer {
 public:
  explicit BpdScanAsyncDataTask(BpdScanner& scanner) : scanner_(scanner) {}
  ~BpdScanAsyncDataTask() override;

  // 0, or 87 for a client that is registered: it stays as it is. With the first client the task attaches to
  // the scanner, without one it is detached. Callers serialise the two, but for those inside a callback.
  std::uint32_t registerClient(std::uint32_t clientId, std::uint32_t mask, QvnScanDataCallback callback);
  std::uint32_t unregisterClient(std::uint32_t clientId);
  void unregisterAll();
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

  // The calling thread is inside a callback of a Bpd scanner: nothing that it waits for can be delivered.
  static bool isCalling() { return callDepth_ > 0; }

 protected:
  using Observer::doUpdate;
  void doUpdate(Data& data) override { updateClients(data); }

 private:
  struct Client {
    std::uint32_t mask;
    QvnScanDataCallback callback;
  };
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

  // Calls the clients that want the kind, in the order of their ids; false when there is none.
  template <typename Returned>
  bool callClients(std::uint32_t bit, const std::uint8_t* data, std::uint32_t length, Returned&& returned);

  BpdScanner& scanner_;
  std::atomic<bool> detached_{true};

  mutable std::mutex jobLock_;  // guards the job
  Job job_;

  static CriticalSection clientsLock_;  // guards the registrations of all Bpd scanners
  std::map<std::uint32_t, Client> clients_;

  static thread_local int callDepth_;
};

}  // namespace qvn
