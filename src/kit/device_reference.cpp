#include "qvn/transport/device.h"

#include "qvn/result_codes.h"
#include "qvn/transport/notification.h"
#include "qvn/transport/subject.h"

namespace qvn {
namespace {

// The plug-in's thread must not end by what it delivers; false when something was thrown.
template <typename Call>
bool contained(Call&& call) {
  try {
    call();
    return true;
  } catch (...) {
    return false;
  }
}

}  // namespace

bool DeviceReference::accept(Data& data) const {
  const Use use(*this);
  if (use.subject() == nullptr) return false;
  if (!contained([&] { static_cast<Device*>(use.subject())->doAccept(data); })) {
    data.setRc(QRN_ERROR_INTERNAL_ERROR);
  }
  return true;
}

bool DeviceReference::accept(Notification& notification) const {
  const Use use(*this);
  if (use.subject() == nullptr) return false;
  contained([&] { static_cast<Device*>(use.subject())->doAccept(notification); });
  return true;
}

bool DeviceReference::onConnectionLost() const {
  const Use use(*this);
  if (use.subject() == nullptr) return false;
  contained([&] { static_cast<Device*>(use.subject())->doOnConnectionLost(); });
  return true;
}

}  // namespace qvn
