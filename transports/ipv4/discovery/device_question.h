// Asks places over UDP which devices are there.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "discovery/device_answer.h"
#include "net/endpoint.h"

namespace qvn::ipv4 {

struct AnsweringDevice {
  Endpoint place;
  DeviceAnswer answer;
};

// Asks all places side by side, those that keep silent a second time after half of the time-out: datagrams
// get lost, the more the more devices answer at once. Returns when all have answered, when the device with
// the serial number `wanted` has (an empty one wants all), or after the time-out: 0 and the answers in the
// order they came, one from each place, or the code of a failed socket call.
std::uint32_t askPlaces(const std::vector<Endpoint>& places, const std::string& wanted,
                        std::chrono::milliseconds timeout, std::vector<AnsweringDevice>& answers);

}  // namespace qvn::ipv4
