// The simulated printer: what it answers to each command and what it knows about itself.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "base/bytes.h"
#include "base/connection_id.h"
#include "faults/fault_switches.h"
#include "print/alert_registration.h"
#include "print/job_queue.h"
#include "print/npa_packets.h"

namespace sim {

inline constexpr char kCpdPrinter[] = "CpdPrinter";
inline constexpr char kBpdPrinter[] = "BpdPrinter";

struct Identity {
  std::string family = kCpdPrinter;
  std::string model = "Simulated Printer";
  std::string serial = "SIM0000001";
  std::string name = "qvn-sim";
};

class Printer {
 public:
  // `readPrintData` takes in what has already arrived on the print port, so that an answer about a job never
  // lags behind its data.
  Printer(JobQueue& jobs, const FaultSwitches& faults, std::function<void()> readPrintData);

  // Carries out a command of at least its shortest length and gives the reply.
  Bytes answer(ConnectionId from, npa::Command command, ByteView packet);
  static Bytes reject(ByteView packet);

  bool wantsAlert(ConnectionId host, ByteView alert) const;
  bool wantsJobStatus(ConnectionId host) const;
  void connectionClosed(ConnectionId host);

  // Changes the status and gives the alert that tells so.
  Bytes setStatus(std::uint8_t busy, std::uint16_t status);
  Bytes setBusy(bool busy) { return setStatus(busy ? 1 : 0, status_); }
  // The status as a parallel port's lines show it (IEEE 1284): paper empty, selected, no error.
  std::uint8_t portStatus() const;
  // Forgets what hosts have set up and gives the alert that tells so.
  Bytes reset();
  static Bytes cancelAcknowledge();

 private:
  struct Host {
    AlertRegistration alerts;
    std::uint16_t job = 0;  // the one it started last
  };

  Bytes lock(ConnectionId from);
  Bytes cache() const;
  void appendStatusEntries(Bytes& packet) const;

  JobQueue& jobs_;
  const FaultSwitches& faults_;
  const std::function<void()> readPrintData_;
  std::map<ConnectionId, Host> hosts_;
  std::optional<ConnectionId> lockedBy_;
  std::uint8_t busy_ = 0;
  std::uint16_t status_ = 0;
};

}  // namespace sim
