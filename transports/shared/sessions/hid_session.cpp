#include "shared/sessions/hid_session.h"

#include <optional>

#include "qvn/transport/device.h"
#include "qvn/transport/notification.h"

namespace qvn::shared {

void HidSession::deliver(const HidFrame& frame, const DeviceReference& device) {
  if (frame.type == kHidReport) {
    lend(device, frame.content);
  } else if (frame.type == kHidEvent) {
    const std::optional<HidEvent> event = parseHidEvent(frame.content);
    if (!event) return;
    Notification notification;
    notification.category = event->category;
    notification.id = event->id;
    device.accept(notification);
  }
}

}  // namespace qvn::shared
