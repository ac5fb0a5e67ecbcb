// The printer's alerts as states of its queue, for as long as this object lives.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>

#include "report.h"
#include "shared/alerts/alert_words.h"
#include "shared/client/open_printer.h"

namespace qvn::cups {

class AlertStates {
 public:
  // Asks the printer for alerts and reads how it is now. A printer that tells neither has no states. One at a
  // time in a process.
  AlertStates(const cli::OpenPrinter& printer, Report& report);
  ~AlertStates();
  AlertStates(const AlertStates&) = delete;
  AlertStates& operator=(const AlertStates&) = delete;

 private:
  static void onAlert(std::uint32_t, const std::uint8_t* alert, std::uint32_t length, std::uint32_t);
  void hear(const alerts::Alert& alert);
  void readCache();
  // Tells the reasons of these conditions and takes the others back.
  void show(std::uint16_t statusWord);

  std::uint32_t client_;
  std::uint32_t handle_;
  Report& report_;
  // Guards the order of what is shown: an alert is newer than the cache that was asked for before it came.
  std::mutex mutex_;
  bool heard_ = false;
  std::uint16_t shown_ = 0;
};

}  // namespace qvn::cups
