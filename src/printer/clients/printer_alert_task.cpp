#include "printer/clients/printer_alert_task.h"

#include <initializer_list>
#include <string>
#include <utility>

#include "common/clients/operation_lock.h"
#include "common/logging/basic_logger.h"
#include "device/connection_use.h"
#include "npa/alert_registration.h"
#include "npa/npa_packet.h"
#include "printer/clients/printer_alert_type.h"
#include "qvn/result_codes.h"
#include "qvn/transport/connection_manager.h"

namespace qvn {

std::uint32_t PrinterAlertTask::maskOfOthers(std::uint32_t clientId) const {
  std::uint32_t mask = 0;
  clients_.forEach(kPrinter, [&](const AlertRegistration& registration) {
    if (registration.clientId != clientId) mask |= registration.mask;
  });
  return mask;
}

bool PrinterAlertTask::sendRegistrations(std::uint32_t oldMask, std::uint32_t newMask, bool unregistering) {
  RegisterForDeviceStatusAlertsCommand deviceStatus;
  RegisterForQuorinExtendedAlertsCommand extended;
  RegisterForQuorinExtendedAlertsWithLanguageIdCommand extendedWithLanguageId;
  RegisterForQuorinExtensionAlertsCommand extension;
  RegisterForPanelAlertsCommand panel;
  bool accepted = false;
  for (AlertRegistrationCommand* const command : std::initializer_list<AlertRegistrationCommand*>{
           &deviceStatus, &extended, &extendedWithLanguageId, &extension, &panel}) {
    if (!command->bidiRequired(newMask, oldMask)) continue;
    command->setMask(newMask);
    logDetail(log_component::server(), [&] {
      return unregistering ? LogText() << "PrinterAlertTask : sending NPA"
                           : LogText() << "PrinterAlertTask::registerClient() handle=" << printer_.getHandle()
                                       << "sending NPA to register for alerts";
    });
    Data response;
    std::uint32_t rc = QRN_ERROR_BUSY;
    try {
      rc = resultOf([&] { return printer_.doExchangeNpa(command->packet(), response); });
    } catch (const CallbackRefusal&) {
      // The printer is at work: it is told with the next change.
    }
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
  const std::uint32_t oldMask = maskOfAll();
  if (registration.mask == 0) {
    logError(log_component::server(), [] { return LogText() << "Alert mask cannot be 0."; });
    return QRN_ERROR_INVALID_PARAMETER;
  }
  clients_.replace(kPrinter, registration);
  struct Registering {
    PrinterAlertTask& task;
    std::uint32_t clientId;
    bool succeeded = false;
    ~Registering() {
      if (!succeeded) task.clients_.remove(kPrinter, clientId);
      task.settle();
    }
  } registering{*this, registration.clientId};
  listen();
  const std::uint32_t newMask = oldMask | registration.mask;
  if (!registrationNeeded_ && newMask == oldMask) {
    logDetail(log_component::server(),
              [] { return LogText() << "Server is already registered with printer for desired alerts"; });
    registering.succeeded = true;
    return QRN_ERROR_SUCCESS;
  }
  const ConnectionUse connection(printer_, connection_name::kBidi);
  if (!sendRegistrations(oldMask, newMask, false)) return QRN_ERROR_INVALID_FUNCTION;
  if (oldMask == 0) {
    printer_.setAlertsRegistered(true);
    KeptConnection channel(printer_, *connection);
    {
      const std::lock_guard<std::mutex> lock(listeningMutex_);
      std::swap(channel_, channel);
    }
    registrationNeeded_ = false;
  }
  registering.succeeded = true;
  return QRN_ERROR_SUCCESS;
}

std::uint32_t PrinterAlertTask::unregisterClient(std::uint32_t clientId) {
  bool isKnown = false;
  clients_.forEach(kPrinter, [&](const AlertRegistration& registration) {
    isKnown = isKnown || registration.clientId == clientId;
  });
  if (!isKnown) {
    logError(log_component::server(),
             [&] { return LogText() << "PrinterAlertTask : client" << clientId << "not found"; });
    return QRN_ERROR_INVALID_FUNCTION;
  }
  const std::uint32_t all = maskOfAll();
  const std::uint32_t others = maskOfOthers(clientId);
  if (others != all) sendRegistrations(all, others, true);
  clients_.remove(kPrinter, clientId);
  settle();
  return QRN_ERROR_SUCCESS;
}

void PrinterAlertTask::unregisterAll() {
  clients_.removeAll(kPrinter);
  settle();
}

void PrinterAlertTask::listen() {
  const std::lock_guard<std::mutex> lock(listeningMutex_);
  // Once, however many clients there are: each alert is for the task once.
  if (!std::exchange(listening_, true)) attachTo(printer_);
}

void PrinterAlertTask::settle() {
  KeptConnection ended;
  const std::lock_guard<std::mutex> lock(listeningMutex_);
  if (!clients_.isEmpty()) return;
  if (std::exchange(listening_, false)) detachFrom(printer_);
  printer_.setAlertsRegistered(false);
  ended = std::move(channel_);
}

void PrinterAlertTask::doUpdate(Data& data) {
  if (!NpaPacket(data).isAlert()) return;
  const std::uint32_t type = getAlertType(data);
  if (type == 0) return;
  clients_.callEach(
      kPrinter, [&](const AlertRegistration& registration) { return (registration.mask & type) != 0; },
      [&](const AlertRegistration& registration) {
        logDetail(log_component::server(), [&] {
          return (LogText() << "PrinterAlertTask sending: ").hex(data)
                 << " to clientId=" << registration.clientId;
        });
        registration.callback(printer_.getHandle(), bytesOf(data).data(), data.getLength(),
                              registration.clientId);
      },
      [&](const AlertRegistration& registration, const std::string& thrown) {
        logError(log_component::server(), [&] {
          return LogText() << "PrinterAlertTask Caught Exception clientId=" << registration.clientId
                           << ", Exception=" << thrown;
        });
      });
}

}  // namespace qvn
