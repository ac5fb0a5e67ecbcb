#include "printer/printer_object.h"

#include <utility>

#include "common/clients/operation_lock.h"
#include "qvn/result_codes.h"

namespace qvn {

PrinterObject::PrinterObject(std::unique_ptr<Printer> printer, const std::string& attributes)
    : device_(std::move(printer)) {
  if (device_) device_->setAttributes(attributes);
}

PrinterObject::~PrinterObject() = default;

std::string PrinterObject::getAttributes() const {
  return device_ ? device_->getAttributes() : std::string();
}

void PrinterObject::requestCancel() {
  if (device_) device_->requestCancel();
}

void PrinterObject::shutDown() {
  if (device_) device_->shutDown();
}

void PrinterObject::passNotification(const Notification& record) {
  if (device_) device_->passNotification(record);
}

std::uint32_t PrinterObject::open(std::uint32_t clientId) {
  if (!device_) return QRN_ERROR_INVALID_HANDLE;
  const std::uint32_t rc = device_->doOpen();
  if (rc != QRN_ERROR_SUCCESS) return rc;
  try {
    CriticalSectionLock lock(openCountsLock_);
    ++openCounts_[clientId];
  } catch (...) {
    device_->doClose();
    throw;
  }
  return QRN_ERROR_SUCCESS;
}

bool PrinterObject::isOpenBy(std::uint32_t clientId) {
  CriticalSectionLock lock(openCountsLock_);
  return openCounts_.contains(clientId);
}

PrinterObject::Close PrinterObject::closeOnce(std::uint32_t clientId) {
  CriticalSectionLock lock(openCountsLock_);
  const auto found = openCounts_.find(clientId);
  if (found == openCounts_.end()) return Close::NotOpen;
  if (found->second > 1) {
    --found->second;
    return Close::StillOpen;
  }
  openCounts_.erase(found);
  return Close::Last;
}

std::uint32_t PrinterObject::close(std::uint32_t clientId, bool& wasOpen) {
  wasOpen = false;
  if (!device_) return QRN_ERROR_INTERNAL_ERROR;
  const Close closed = closeOnce(clientId);
  wasOpen = closed != Close::NotOpen;
  switch (closed) {
    case Close::NotOpen:
      return QRN_ERROR_INVALID_FUNCTION;
    case Close::StillOpen:
      break;
    case Close::Last:
      // Outside the lock: ending a job takes as long as the printer needs.
      if (owns(clientId)) {
        resultOf([&] { return device_->doCancelPrint(); });
        endOwnedJob(clientId);
      }
      break;
  }
  return device_->doClose();
}

std::uint32_t PrinterObject::startJob(std::uint32_t clientId, const JobRequest& job) {
  if (!device_) return QRN_ERROR_INTERNAL_ERROR;
  std::uint32_t nobody = 0;
  if (clientId == 0 || !jobOwner_.compare_exchange_strong(nobody, clientId)) return QRN_ERROR_ACCESS_DENIED;
  struct Start {
    std::atomic<std::uint32_t>& owner;
    bool succeeded = false;
    ~Start() {
      if (!succeeded) owner = 0;
    }
  } start{jobOwner_};
  const std::uint32_t rc = device_->doStartJob(job);
  start.succeeded = rc == QRN_ERROR_SUCCESS;
  return rc;
}

std::uint32_t PrinterObject::endOwnedJob(std::uint32_t clientId) {
  const std::uint32_t rc = resultOf([&] { return device_->doEndJob(); });
  jobOwner_.compare_exchange_strong(clientId, 0);
  return rc;
}

std::uint32_t PrinterObject::print(std::uint32_t clientId, Data& request) {
  if (!device_) return QRN_ERROR_INTERNAL_ERROR;
  return owns(clientId) ? device_->doPrint(request) : QRN_ERROR_ACCESS_DENIED;
}

std::uint32_t PrinterObject::endJob(std::uint32_t clientId) {
  if (!device_) return QRN_ERROR_INTERNAL_ERROR;
  return owns(clientId) ? endOwnedJob(clientId) : QRN_ERROR_ACCESS_DENIED;
}

std::uint32_t PrinterObject::cancelPrint(std::uint32_t /*clientId*/) {
  return device_ ? device_->doCancelPrint() : QRN_ERROR_INTERNAL_ERROR;
}

std::uint32_t PrinterObject::exchangeNpa(std::uint32_t /*clientId*/, Data& request, Data& response) {
  return device_ ? device_->doExchangeNpa(request, response) : QRN_ERROR_INTERNAL_ERROR;
}

std::uint32_t PrinterObject::getCache(std::uint32_t /*clientId*/, Data& cache) {
  return device_ ? device_->doGetCache(cache) : QRN_ERROR_INTERNAL_ERROR;
}

std::uint32_t PrinterObject::getCurrentState(std::uint32_t /*clientId*/, std::uint32_t& state) {
  return device_ ? device_->doGetCurrentState(state) : QRN_ERROR_INTERNAL_ERROR;
}

std::uint32_t PrinterObject::registerForAlerts(const AlertRegistration& registration) {
  return device_ ? device_->doRegisterForAlerts(registration) : QRN_ERROR_INTERNAL_ERROR;
}

std::uint32_t PrinterObject::unregisterForAlerts(std::uint32_t clientId) {
  return device_ ? device_->doUnregisterForAlerts(clientId) : QRN_ERROR_INTERNAL_ERROR;
}

std::uint32_t PrinterObject::registerForNotifications(const NotificationRegistration& registration) {
  return device_ ? device_->doRegisterForNotifications(registration) : QRN_ERROR_INTERNAL_ERROR;
}

std::uint32_t PrinterObject::unregisterForNotifications(std::uint32_t clientId) {
  return device_ ? device_->doUnregisterForNotifications(clientId) : QRN_ERROR_INTERNAL_ERROR;
}

std::uint32_t PrinterObject::setByteArray(const std::string& descriptor, const std::uint8_t* bytes,
                                          std::uint32_t length) {
  return device_ ? device_->setByteArray(descriptor, bytes, length) : QRN_ERROR_INTERNAL_ERROR;
}

std::uint32_t PrinterObject::setLong(const std::string& descriptor, std::uint32_t value) {
  return device_ ? device_->setLong(descriptor, value) : QRN_ERROR_INTERNAL_ERROR;
}

std::uint32_t PrinterObject::setString(const std::string& descriptor, const std::string& value) {
  return device_ ? device_->setString(descriptor, value) : QRN_ERROR_INTERNAL_ERROR;
}

void PrinterObject::setAttributes(const std::string& attributes) {
  if (device_) device_->setAttributes(attributes);
}

}  // namespace qvn
