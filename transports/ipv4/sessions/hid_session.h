// One TCP connection to a device's HID port, whose reports and events go to the device.
#pragma once

#include "sessions/stream_session.h"
#include "streams/hid_stream.h"

namespace qvn::ipv4 {

class HidSession : public StreamSession<HidStream> {
 public:
  using StreamSession::StreamSession;
  ~HidSession() override { finish(); }

 protected:
  void deliver(const HidFrame& frame, const DeviceReference& device) override;
};

}  // namespace qvn::ipv4
