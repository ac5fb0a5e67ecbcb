#include "hid_session.h"

#include <utility>

#include "qvn/transport/lent_data.h"

namespace qvn::ipv4 {

std::uint32_t HidSession::start(const Endpoint& endpoint, const Timeouts& timeouts,
                                const DeviceReference& device, std::shared_ptr<HidSession>& session) {
  TcpSocket socket;
  if (const std::uint32_t rc = socket.connect(endpoint, timeouts.connect); rc != QRN_ERROR_SUCCESS) return rc;
  std::shared_ptr<HidSession> made(new HidSession(std::move(socket), device));
  if (const std::uint32_t rc = made->startReader(); rc != QRN_ERROR_SUCCESS) return rc;
  session = std::move(made);
  return QRN_ERROR_SUCCESS;
}

void HidSession::deliver(const HidFrame& frame) {
  DeviceReference device;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    device = device_;
  }
  if (frame.type == kHidReport) {
    LentData report(frame.content.data(), static_cast<std::uint32_t>(frame.content.size()));
    device.accept(report);
  } else if (frame.type == kHidEvent) {
    const std::optional<HidEvent> event = parseHidEvent(frame.content);
    if (!event) return;
    Notification notification;
    notification.category = event->category;
    notification.id = event->id;
    device.accept(notification);
  }
}

}  // namespace qvn::ipv4
