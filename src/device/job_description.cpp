#include "device/job_description.h"

namespace qvn {

void JobDescription::start(const JobRequest& request) {
  CriticalSectionLock lock(lock_);
  request_ = request;
  if (request_.userName.empty()) request_.userName = " ";
  printerJobId_ = 0;
  accountNumber_.clear();
  complete_ = false;
  dataSent_ = false;
}

JobRequest JobDescription::request() const {
  CriticalSectionLock lock(lock_);
  return request_;
}

void JobDescription::setPrinterJobId(std::uint32_t id) {
  CriticalSectionLock lock(lock_);
  printerJobId_ = id;
}

std::uint32_t JobDescription::printerJobId() const {
  CriticalSectionLock lock(lock_);
  return printerJobId_;
}

void JobDescription::setAccountNumber(const std::string& account) {
  CriticalSectionLock lock(lock_);
  accountNumber_ = account;
}

std::string JobDescription::accountNumber() const {
  CriticalSectionLock lock(lock_);
  return accountNumber_;
}

void JobDescription::setDataSent() {
  CriticalSectionLock lock(lock_);
  dataSent_ = true;
}

bool JobDescription::isDataSent() const {
  CriticalSectionLock lock(lock_);
  return dataSent_;
}

void JobDescription::setComplete(bool complete) {
  CriticalSectionLock lock(lock_);
  complete_ = complete;
}

bool JobDescription::isComplete() const {
  CriticalSectionLock lock(lock_);
  return complete_;
}

}  // namespace qvn
