#include "alert_states.h"

#include <string>
#include <vector>

#include "qvn/qvn.h"
#include "qvn/result_codes.h"
#include "shared/client/devices.h"
#include "shared/client/printer_questions.h"

namespace qvn::cups {

namespace {

// The class of status alerts, resets and acknowledged cancels.
constexpr std::uint32_t kExtendedAlerts = 0x100000;

// Who hears the alerts; the callback has no argument to carry it.
std::atomic<AlertStates*> heardBy{nullptr};

}  // namespace

AlertStates::AlertStates(const cli::OpenPrinter& printer, Report& report)
    : client_(printer.client()), handle_(printer.device().handle), report_(report) {
  heardBy = this;
  const std::uint32_t registered = QvnRegisterForAlertsPrinter(client_, handle_, kExtendedAlerts, onAlert);
  if (registered != QRN_ERROR_SUCCESS) {
    report_.debug("the printer sends no alerts (result " + std::to_string(registered) + ")");
  }
  readCache();
}

AlertStates::~AlertStates() {
  QvnUnregisterForAlertsPrinter(client_, handle_);
  heardBy = nullptr;
}

void AlertStates::onAlert(std::uint32_t, const std::uint8_t* alert, std::uint32_t length, std::uint32_t) {
  heardBy.load()->hear(alerts::decodeAlert({alert, length}));
}

void AlertStates::hear(const alerts::Alert& alert) {
  const std::lock_guard<std::mutex> lock(mutex_);
  // That a job has begun or ended is told by the job's own steps.
  if (!alert.status || alert.status->word != shown_) report_.info(alert.words);
  if (alert.status) {
    heard_ = true;
    show(alert.status->word);
  } else if (alert.kind == alerts::AlertKind::PowerOnReset) {
    heard_ = true;
    show(0);
  }
}

void AlertStates::readCache() {
  std::vector<std::uint8_t> cache;
  if (cli::readCache(client_, handle_, cache) != QRN_ERROR_SUCCESS) return;
  const auto status = alerts::decodeCache(cache);
  if (!status) return;
  const std::lock_guard<std::mutex> lock(mutex_);
  if (heard_) return;
  if (status->word != 0) report_.info(alerts::statusWords(*status));
  show(status->word);
  // A process before this one may have ended without taking back what it told.
  std::vector<std::string> reasons;
  for (const alerts::Condition& condition : alerts::conditions()) reasons.emplace_back(condition.reason);
  report_.forgetReasons(reasons);
}

void AlertStates::show(std::uint16_t statusWord) {
  shown_ = statusWord;
  for (const alerts::Condition& condition : alerts::conditions()) {
    report_.setReason(condition.reason, (statusWord & condition.bit) != 0);
  }
}

}  // namespace qvn::cups
