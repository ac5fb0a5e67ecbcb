// The name of a queue's device: qvn://PORTNAME, percent-encoded (RFC 3986), with options behind a question
// mark.
#pragma once

#include <cstdint>
#include <string>

#include "platform/base/clock.h"

namespace qvn::cups {

struct DeviceUri {
  std::string portName;
  // How long to try for a printer that is busy or cannot be reached: "contimeout", in seconds.
  platform::Milliseconds patience;
};

std::string formatDeviceUri(const std::string& portName);

// Throws UsageError (failure.h) with what is wrong.
DeviceUri parseDeviceUri(const std::string& uri);

}  // namespace qvn::cups
