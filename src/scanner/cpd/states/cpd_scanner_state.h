// CpdScannerState: what a Cpd scanner does with each operation while it is in a state.
//
//                Closed          Open               Scanning            EndJobPending    Cancel
//   open         -> Open         count              count               count            count
//   close        0               count              count               count            count
//   startJob     1               go, -> Scanning    1                   1                1
//   endJob       1               1                  1                   -> Open          wait, -> Open
//   cancelJob    1               1                  -> Cancel           0                0
//   exchange     1               exchange           1                   1                1
//   register     1               register           register            register         register
//   accept       refuse          observers          clients (*)         refuse           clients (**)
//   lost         1               1                  -> EndJobPending    1                1
//
//   count: only the open count changes; the close that brings it to 0 closes the connection, -> Closed
//   (*) a status ends the scan, -> EndJobPending     (**) a status only, which ends the wait
#pragma once

#include <cstdint>

#include "device/client_registration.h"
#include "qvn/transport/data.h"

namespace qvn {

class CpdScanner;

// One object per class, shared by all scanners and without data but its name. Client operations are called
// with the scanner's state lock held, doAccept and doOnConnectionLost without. The operations here are what a
// state does that does not say otherwise: most answer 1.
class CpdScannerState {
 public:
  CpdScannerState(const CpdScannerState&) = delete;
  CpdScannerState& operator=(const CpdScannerState&) = delete;
  virtual ~CpdScannerState();

  virtual std::uint32_t doOpen(CpdScanner& scanner) const;
  virtual std::uint32_t doClose(CpdScanner& scanner) const;
  virtual std::uint32_t doCancelJob(CpdScanner& scanner, std::uint32_t clientId) const;
  virtual std::uint32_t doStartJob(CpdScanner& scanner, std::uint32_t clientId, void* parameters) const;
  virtual std::uint32_t doEndJob(CpdScanner& scanner) const;
  virtual std::uint32_t doExchangeData(CpdScanner& scanner, std::uint32_t clientId, Data& command,
                                       Data& response) const;
  virtual std::uint32_t doExchangeData(CpdScanner& scanner, std::uint32_t clientId, Data& data) const;
  virtual std::uint32_t doRegisterForAsyncData(CpdScanner& scanner,
                                               const AsyncDataRegistration& registration) const;
  virtual std::uint32_t doUnregisterForAsyncData(CpdScanner& scanner, std::uint32_t clientId) const;
  virtual void doEnterState(CpdScanner& scanner) const = 0;
  virtual void doAccept(CpdScanner& scanner, Data& data) const;
  virtual std::uint32_t getStateValue() const;
  virtual std::uint32_t doOnConnectionLost(CpdScanner& scanner) const;

 protected:
  explicit CpdScannerState(const char* name) : name_(name) {}

  const char* name() const { return name_; }

 private:
  std::uint32_t refuse(CpdScanner& scanner, const char* label) const;

  const char* const name_;
};

// What the states of an open scanner have in common.
class CpdScannerOpenedState : public CpdScannerState {
 public:
  std::uint32_t doOpen(CpdScanner& scanner) const override;
  std::uint32_t doClose(CpdScanner& scanner) const override;
  std::uint32_t doRegisterForAsyncData(CpdScanner& scanner,
                                       const AsyncDataRegistration& registration) const override;
  std::uint32_t doUnregisterForAsyncData(CpdScanner& scanner, std::uint32_t clientId) const override;

 protected:
  using CpdScannerState::CpdScannerState;
};

}  // namespace qvn
