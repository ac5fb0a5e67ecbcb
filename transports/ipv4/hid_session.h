// One TCP connection to a device's HID port, whose reports and events go to the device.
#pragma once

#include <memory>

#include "hid_stream.h"
#include "ip_settings.h"
#include "stream_session.h"

namespace qvn::ipv4 {

class HidSession : public StreamSession<HidStream> {
 public:
  // 0 and a session that delivers to the device, or why not.
  static std::uint32_t start(const Endpoint& endpoint, const Timeouts& timeouts,
                             const DeviceReference& device, std::shared_ptr<HidSession>& session);
  ~HidSession() override { finish(); }

 protected:
  void deliver(const HidFrame& frame) override;

 private:
  using StreamSession::StreamSession;
};

}  // namespace qvn::ipv4
