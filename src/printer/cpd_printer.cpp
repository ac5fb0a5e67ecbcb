#include "printer/cpd_printer.h"

#include <new>

#include "common/application_settings.h"
#include "common/basic_logger.h"
#include "common/exception.h"
#include "device/connection_use.h"
#include "npa/job_commands.h"
#include "printer/cache_task.h"
#include "printer/cpd_printer_cache.h"
#include "printer/cpd_printer_closed.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"

namespace qvn {

CpdPrinter::CpdPrinter() : state_(&CpdPrinterClosed::getInstance()), writer_(*this) {
  state_->doEnterState(*this);
}

// The transport's threads and the writer's call this object.
CpdPrinter::~CpdPrinter() {
  endReferences();
  CpdPrinter::shutDown();
}

void CpdPrinter::shutDown() {
  writer_.purge();
  writer_.stop();
}

template <typename Operation>
std::uint32_t CpdPrinter::withState(Operation&& operation) {
  if (isReportingHere()) return QRN_ERROR_BUSY;
  CriticalSectionLock lock(stateLock_);
  return operation(*state_);
}

std::uint32_t CpdPrinter::doOpen() {
  return withState([&](const CpdPrinterState& state) { return state.doOpen(*this); });
}

std::uint32_t CpdPrinter::doClose() {
  return withState([&](const CpdPrinterState& state) { return state.doClose(*this); });
}

std::uint32_t CpdPrinter::doStartJob(const JobRequest& job) {
  return withState([&](const CpdPrinterState& state) {
    writerEnabled_ = longSetting("CpdPrinterMwo", 1) != 0;
    return state.doStartJob(*this, job);
  });
}

std::uint32_t CpdPrinter::doPrint(Data& request) {
  if (isReportingHere()) return QRN_ERROR_BUSY;
  return writerEnabled_ ? writer_.print(request) : doWrite(request);
}

std::uint32_t CpdPrinter::doWrite(Data& request) {
  return withState([&](const CpdPrinterState& state) { return state.doPrint(*this, request); });
}

std::uint32_t CpdPrinter::doEndJob() {
  if (isReportingHere()) return QRN_ERROR_BUSY;
  // Without the state lock, which the writer's thread needs to drain its queue.
  if (writerEnabled_) writer_.stop();
  return withState([&](const CpdPrinterState& state) { return state.doEndJob(*this); });
}

std::uint32_t CpdPrinter::doCancelPrint() {
  return withState([&](const CpdPrinterState& state) { return state.doCancelPrint(*this); });
}

void CpdPrinter::changeState(const CpdPrinterState& state) {
  CriticalSectionLock lock(stateLock_);
  state_ = &state;
  state_->doEnterState(*this);
}

std::uint32_t CpdPrinter::doExchangeNpa(Data& request, Data& response) {
  CriticalSectionLock lock(stateLock_);
  const std::uint32_t rc = state_->doExchangeNpa(*this, request, response);
  if (!GetCacheCommand::isRequest(request)) return rc;
  if (rc == QRN_ERROR_SUCCESS) {
    setCache(response);
  } else if (rc == QRN_ERROR_INVALID_FUNCTION) {
    const Data stored = cache();
    if (stored.getLength() == 0) return rc;
    // A cache longer than the response leaves the response as it is.
    response.fill(stored.getBuffer(), stored.getLength());
    return QRN_ERROR_SUCCESS;
  }
  return rc;
}

std::uint32_t CpdPrinter::doGetCache(Data& cache) {
  std::uint32_t rc = QRN_ERROR_SUCCESS;
  {
    const ConnectionUse connection(*this, connection_name::kCache);
    rc = CacheTask(*this, *connection, cache).execute();
  }
  if (rc == QRN_ERROR_INVALID_FUNCTION) {
    rc = fetchCacheByNpa(cache);
    removeNpaHeader(cache);
  }
  return rc;
}

std::uint32_t CpdPrinter::fetchCacheByNpa(Data& output) {
  logDetail(log_component::server(), [] { return LogText() << " sending NPA to get cache"; });
  CriticalSectionLock lock(stateLock_);
  state_->doOpen(*this);
  GetCacheCommand command;
  Data reply;
  std::uint32_t rc = state_->doExchangeNpa(*this, command.packet(), reply);
  if (rc == QRN_ERROR_SUCCESS) setCache(reply);
  const Data stored = cache();
  if (stored.getLength() != 0) {
    output = stored;
    rc = QRN_ERROR_SUCCESS;
  }
  state_->doClose(*this);
  return rc;
}

Data CpdPrinter::cache() {
  CriticalSectionLock lock(cacheLock_);
  return cache_;
}

void CpdPrinter::setCache(const Data& cache) {
  CriticalSectionLock lock(cacheLock_);
  cache_ = cache;
}

void CpdPrinter::updateCacheEntry(std::uint16_t id, std::span<const std::uint8_t> value) {
  CriticalSectionLock lock(cacheLock_);
  if (!CpdPrinterCache::isValid(cache_)) return;
  CpdPrinterCache cache(cache_);
  if (cache.update(id, value) == QRN_ERROR_SUCCESS) cache_ = cache.data();
}

PrinterAlertTask* CpdPrinter::makeAlertTask() {
  CriticalSectionLock lock(taskLock_);
  try {
    if (!alertTask_) alertTask_ = std::make_unique<CpdPrinterAlertTask>(*this);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
  return alertTask_.get();
}

std::uint32_t CpdPrinter::doRegisterForAlerts(const AlertRegistration& registration) {
  if (PrinterAlertTask* const task = makeAlertTask()) return task->registerClient(registration);
  logError(log_component::server(),
           [] { return LogText() << "CpdPrinter::doRegisterForAlerts() cannot get PrinterAlertTask"; });
  return QRN_ERROR_INTERNAL_ERROR;
}

std::uint32_t CpdPrinter::doUnregisterForAlerts(std::uint32_t clientId) {
  if (PrinterAlertTask* const task = makeAlertTask()) return task->unregisterClient(clientId);
  logError(log_component::server(),
           [] { return LogText() << "CpdPrinter::doUnregisterForAlerts() cannot get PrinterAlertTask"; });
  return QRN_ERROR_INTERNAL_ERROR;
}

NotificationTask* CpdPrinter::notificationTask() {
  CriticalSectionLock lock(taskLock_);
  return notificationTask_.get();
}

NotificationTask* CpdPrinter::makeNotificationTask() {
  CriticalSectionLock lock(taskLock_);
  if (!notificationTask_) {
    std::uint32_t handle = 0;
    const std::string attributes = getAttributes();
    if (AttributeCodec::getLong(attributes, attribute::kHandle, handle) == QRN_ERROR_SUCCESS) {
      notificationTask_ = std::make_unique<NotificationTask>(handle);
    } else {
      logError(log_component::server(),
               [&] { return LogText() << "TransportString does not contain handle:" << attributes; });
    }
  }
  return notificationTask_.get();
}

std::uint32_t CpdPrinter::doRegisterForNotifications(const NotificationRegistration& registration) {
  if (NotificationTask* const task = makeNotificationTask()) return task->registerClient(registration);
  logError(log_component::server(), [] {
    return LogText() << "CpdPrinter::doRegisterForNotifications() cannot get NotificationTask";
  });
  return QRN_ERROR_INTERNAL_ERROR;
}

std::uint32_t CpdPrinter::doUnregisterForNotifications(std::uint32_t clientId) {
  if (NotificationTask* const task = makeNotificationTask()) return task->unregisterClient(clientId);
  logError(log_component::server(), [] {
    return LogText() << "CpdPrinter::doUnregisterForNotifications() cannot get NotificationTask";
  });
  return QRN_ERROR_INTERNAL_ERROR;
}

std::uint32_t CpdPrinter::doGetCurrentState(std::uint32_t& state) {
  CriticalSectionLock lock(stateLock_);
  state = state_->stateCode();
  logDetail(log_component::server(), [&] {
    return LogText() << "doGetCurrentState()"
                     << "ERROR_SUCCESS, state=" << state;
  });
  return QRN_ERROR_SUCCESS;
}

void CpdPrinter::notifyJobStatus(const Notification& record) {
  NotificationTask* const task = notificationTask();
  if (task == nullptr) return;
  // Called with the state lock held, so there is one such thread at a time.
  const std::thread::id outer = reportingThread_.exchange(std::this_thread::get_id());
  task->notify(record);
  reportingThread_ = outer;
}

void CpdPrinter::sendJobStatus(std::uint32_t id) {
  Notification record;
  record.handle = getHandle();
  record.category = job_status::kCategory;
  record.id = id;
  notifyJobStatus(record);
}

void CpdPrinter::setBidiAllowed(bool allowed) {
  logDetail(log_component::server(), [&] {
    return LogText() << "CpdPrinter::setBidiAllowed(" << allowed << ") handle=" << getHandle();
  });
  Printer::setBidiAllowed(allowed);
}

}  // namespace qvn
