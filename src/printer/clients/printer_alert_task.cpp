#include "printer/clients/printer_alert_task.h"

#include <utility>

#include "common/logging/basic_logger.h"
#include "device/connection_use.h"
#include "npa/npa_packet.h"
#include "printer/clients/printer_alert_type.h"
#include "qvn/result_codes.h"
#include "qvn/transport/connection_manager.h"

namespace qvn {

PrinterAlertTask::PrinterAlertTask(Printer& printer)
    : printer_(printer),
      commands_{std::make_unique<RegisterForDeviceStatusAlertsCommand>(),
                std::make_unique<RegisterForQuorinExtendedAlertsCommand>(),
                std::make_unique<RegisterForQuorinExtendedAlertsWithLanguageIdCommand>(),
                std::make_unique<RegisterForQuorinExtensionAlertsCommand>(),
                std::make_unique<RegisterForPanelAlertsCommand>()} {}

PrinterAlertTask::~PrinterAlertTask() {
  if (listening_) detachFrom(printer_);
}

std::uint32_t PrinterAlertTask::maskOfAll() const { return maskOfOthers(0); }

std::uint32_t PrinterAlertTask::maskOfOthers(std::uint32_t clientId) const {
  std::uint32_t mask = 0;
  for (const auto& [id, registration] : clients_.all()) {
    if (id != clientId) mask |= registration.mask;
  }
  return mask;
}

bool PrinterAlertTask::sendRegistrations(std::uint32_t oldMask, std::uint32_t newMask, bool unregistering) {
  bool accepted = false;
  for (const auto& command : commands_) {
    if (!command->bidiRequired(newMask, oldMask)) continue;
    command->setMask(newMask);
    logDetail(log_component::server(), [&] {
      return unregistering ? LogText() << "PrinterAlertTask : sending NPA"
                           : LogText() << "PrinterAlertTask::registerClient() handle=" << printer_.getHandle()
                                       << "sending NPA to register for alerts";
    });
    Data response;
    const std::uint32_t rc = printer_.doExchangeNpa(command->packet(), response);
    accepted = accepted || rc == QRN_ERROR_SUCCESS;
    if (unregistering && rc != QRN_ERROR_SUCCESS) {
      logError(log_component::server(), [&] {
        return LogText() << "PrinterAlertTask::unregisterClient() - exchangeNpa() failed, rc=" << rc;
      });
    }
  }
  return accepted;
}

std::uint32_t PrinterAlertTask::registerClient(const AlertRegistration& registration) {
  std::uint32_t rc = QRN_ERROR_SUCCESS;
  {
    CriticalSectionLock lock(registrationLock_);
    rc = add(registration);
  }
  if (rc != QRN_ERROR_SUCCESS) finishRemoval(registration.clientId);
  return rc;
}

std::uint32_t PrinterAlertTask::add(const AlertRegistration& registration) {
  const std::uint32_t oldMask = maskOfAll();
  if (registration.mask == 0) {
    logError(log_component::server(), [] { return LogText() << "Alert mask cannot be 0."; });
    return QRN_ERROR_INVALID_PARAMETER;
  }
  clients_.add(registration.clientId, registration);
  // Once, however many clients there are: each alert is for the task once.
  if (!std::exchange(listening_, true)) attachTo(printer_);
  const std::uint32_t newMask = oldMask | registration.mask;
  if (!registrationNeeded_ && newMask == oldMask) {
    logDetail(log_component::server(),
              [] { return LogText() << "Server is already registered with printer for desired alerts"; });
    return QRN_ERROR_SUCCESS;
  }
  const ConnectionUse connection(printer_, connection_name::kBidi);
  if (!sendRegistrations(oldMask, newMask, false)) {
    clients_.remove(registration.clientId);
    return QRN_ERROR_INVALID_FUNCTION;
  }
  if (oldMask == 0) {
    printer_.setAlertsRegistered(true);
    printer_.doPersistConnection(connection.get(), true);
    registrationNeeded_ = false;
  }
  return QRN_ERROR_SUCCESS;
}

std::uint32_t PrinterAlertTask::unregisterClient(std::uint32_t clientId) {
  {
    CriticalSectionLock lock(registrationLock_);
    if (!clients_.all().contains(clientId)) {
      logError(log_component::server(),
               [&] { return LogText() << "PrinterAlertTask : client" << clientId << "not found"; });
      return QRN_ERROR_INVALID_FUNCTION;
    }
    const std::uint32_t all = maskOfAll();
    const std::uint32_t others = maskOfOthers(clientId);
    if (others != all) sendRegistrations(all, others, true);
    clients_.remove(clientId);
    if (others == 0) {
      printer_.setAlertsRegistered(false);
      const ConnectionUse connection(printer_, connection_name::kBidi);
      printer_.doPersistConnection(connection.get(), false);
    }
  }
  finishRemoval(clientId);
  return QRN_ERROR_SUCCESS;
}

// Without the lock, which a client may want inside its callback.
void PrinterAlertTask::finishRemoval(std::uint32_t clientId) {
  bool detach = false;
  {
    CriticalSectionLock lock(registrationLock_);
    detach = clients_.size() == 0 && std::exchange(listening_, false);
  }
  // A client that registers meanwhile attaches the task once more; the first entry goes.
  if (detach) detachFrom(printer_);
  clients_.waitForCalls(clientId);
}

void PrinterAlertTask::doUpdate(Data& data) {
  if (!NpaPacket(data).isAlert()) return;
  const std::uint32_t type = getAlertType(data);
  if (type == 0) return;
  clients_.callEach([&](std::uint32_t clientId, const AlertRegistration& registration) {
    if ((registration.mask & type) == 0) return;
    logDetail(log_component::server(), [&] {
      return (LogText() << "PrinterAlertTask sending: ").hex(data) << " to clientId=" << clientId;
    });
    registration.callback(printer_.getHandle(), data.getBuffer(), data.getLength(), clientId);
  });
}

}  // namespace qvn
