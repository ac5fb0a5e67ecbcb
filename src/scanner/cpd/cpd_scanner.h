// CpdScanner: a scanner that speaks ESC commands; what it does at any moment is its state's matter.
#pragma once

#include <atomic>
#include <cstdint>

#include "common/threads/event.h"
#include "device/client_registration.h"
#include "device/notification.h"
#include "device/open_connection.h"
#include "device/scanner.h"
#include "device/state_machine.h"
#include "scanner/cpd/states/cpd_scanner_state.h"

namespace qvn {

// What the device sends gets through while a client's operation holds the state lock: an exchange waits for
// its reply, the end of a cancelled job for its status. Only while the command that starts a scan is being
// written does a delivery wait: what it brings may be the scan's already.
class CpdScanner : public Scanner, public TracedStateMachine<CpdScanner, CpdScannerState> {
 public:
  CpdScanner();
  ~CpdScanner() override;

  std::uint32_t doOpen() override;
  std::uint32_t doClose() override;
  std::uint32_t doStartJob(std::uint32_t clientId, void* parameters) override;
  std::uint32_t doEndJob(std::uint32_t clientId) override;
  std::uint32_t doCancelJob(std::uint32_t clientId) override;
  std::uint32_t doExchangeData(std::uint32_t clientId, Data& data) override;
  std::uint32_t doExchangeData(std::uint32_t clientId, Data& command, Data& response) override;
  std::uint32_t doRegisterForAsyncData(const AsyncDataRegistration& registration) override;
  std::uint32_t doUnregisterForAsyncData(std::uint32_t clientId) override;
  void waitForCallbacks(std::uint32_t clientId) override;
  std::uint32_t doGetCurrentState(std::uint32_t& state) override;
  void doAccept(Data& data) override;
  using Scanner::doAccept;
  std::uint32_t doOnConnectionLost() override;
  void shutDown() override;

  // For the states.

  std::uint32_t openCount() const { return openCount_; }
  void setOpenCount(std::uint32_t count) { openCount_ = count; }

  // 0 once the "bidi" connection is open, and kept until it is closed.
  std::uint32_t openBidi(const Connection& connection);
  std::uint32_t closeBidi();

  // Sends the bytes on the "bidi" connection; the code of the transfer.
  std::uint32_t send(Data& data);
  // Tells the clients of the printer in the same device how far the scan is, if that is wanted.
  void reportProgress(std::uint32_t id);

  // While the command that starts a scan is on its way, what comes back already belongs to the scan.
  class [[nodiscard]] Start {
   public:
    explicit Start(CpdScanner& scanner) : scanner_(scanner) {
      scanner_.hasEnded_ = false;
      scanner_.isStarting_ = true;
    }
    ~Start() { scanner_.isStarting_ = false; }
    Start(const Start&) = delete;
    Start& operator=(const Start&) = delete;

   private:
    CpdScanner& scanner_;
  };
  // On the device's thread: returns when no scan is being started any more.
  void waitForStart();

  // On the device's thread: the scan is over, unless it is being cancelled.
  void endScan();
  // After a cancel, with the state lock held.
  void waitForLastStatus();
  void signalLastStatus() {
    // Another cancel may follow, and must not make the end wait for what has been.
    hasEnded_ = true;
    cancelEvent_.set();
  }

  static bool isStatus(const Data& data);

 private:
  OpenConnection bidi_;
  std::uint32_t openCount_ = 0;
  bool performanceNotifications_ = false;
  std::uint32_t cancelWaitDuration_ = 0;
  Event cancelEvent_;
  std::atomic<bool> isStarting_{false};
  // Since the scan was started: its last status has come, or its connection was lost.
  std::atomic<bool> hasEnded_{false};
};

}  // namespace qvn
