#include "qvn/transport/device.h"
#include "qvn/transport/notification.h"
#include "qvn/transport/subject.h"

namespace qvn {

bool DeviceReference::accept(Data& data) const {
  const Use use(*this);
  if (use.subject() == nullptr) return false;
  static_cast<Device*>(use.subject())->doAccept(data);
  return true;
}

bool DeviceReference::accept(Notification& notification) const {
  const Use use(*this);
  if (use.subject() == nullptr) return false;
  static_cast<Device*>(use.subject())->doAccept(notification);
  return true;
}

bool DeviceReference::onConnectionLost() const {
  const Use use(*this);
  if (use.subject() == nullptr) return false;
  static_cast<Device*>(use.subject())->doOnConnectionLost();
  return true;
}

}  // namespace qvn
