// BpdScannerState: what a Bpd scanner does with each operation while it is in a state.
//
//                Closed     Open                  Scanning
//   open         -> Open    count                 count
//   close        0          count                 count
//   startJob     1          start, -> Scanning    170 while the job is active, else 1
//   endJob       1          1                     end, -> Open
//   parameter    1          set                   1
//   exchange     1          1                     1
//   register     1          register              register
//
//   count: only the open count changes; the close that brings it to 0 closes the connection, -> Closed
#pragma once

#include <cstdint>

#include "device/client_registration.h"
#include "qvn/transport/data.h"

namespace qvn {

class BpdScanner;

// One object per class, shared by all scanners and without data. Called with the scanner's state lock held,
// doAccept with its notify lock. The operations here are what a state does that does not say otherwise.
class BpdScannerState {
 public:
  BpdScannerState(const BpdScannerState&) = delete;
  BpdScannerState& operator=(const BpdScannerState&) = delete;
  virtual ~BpdScannerState();

  virtual std::uint32_t doOpen(BpdScanner& scanner) const;
  virtual std::uint32_t doClose(BpdScanner& scanner) const;
  virtual std::uint32_t doStartJob(BpdScanner& scanner, std::uint32_t clientId, void* parameters) const;
  virtual std::uint32_t doEndJob(BpdScanner& scanner, std::uint32_t clientId) const;
  virtual std::uint32_t doExchangeData(BpdScanner& scanner, std::uint32_t clientId, Data& command,
                                       Data& response) const;
  virtual std::uint32_t doExchangeData(BpdScanner& scanner, std::uint32_t clientId, Data& data) const;
  virtual std::uint32_t doRegisterForAsyncData(BpdScanner& scanner,
                                               const AsyncDataRegistration& registration) const;
  virtual std::uint32_t doUnregisterForAsyncData(BpdScanner& scanner, std::uint32_t clientId) const;
  virtual void doEnterState(BpdScanner& scanner) const;
  virtual void doAccept(BpdScanner& scanner, Data& data) const;

 protected:
  BpdScannerState() = default;
};

// What the states of an open scanner have in common.
class BpdScannerOpenedState : public BpdScannerState {
 public:
  std::uint32_t doOpen(BpdScanner& scanner) const override;
  std::uint32_t doClose(BpdScanner& scanner) const override;
  std::uint32_t doRegisterForAsyncData(BpdScanner& scanner,
                                       const AsyncDataRegistration& registration) const override;
  std::uint32_t doUnregisterForAsyncData(BpdScanner& scanner, std::uint32_t clientId) const override;

 protected:
  BpdScannerOpenedState() = default;
};

}  // namespace qvn
