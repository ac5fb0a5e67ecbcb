// One channel to a device's HID part, whose reports and events go to the device.
#pragma once

#include "shared/sessions/stream_session.h"
#include "shared/streams/hid_stream.h"

namespace qvn::shared {

class HidSession : public StreamSession<HidStream> {
 public:
  using StreamSession::StreamSession;
  ~HidSession() override { finish(); }

 protected:
  void deliver(const HidFrame& frame, const DeviceReference& device) override;
};

}  // namespace qvn::shared
