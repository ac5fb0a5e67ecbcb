// The devices that a command listens to.
#pragma once

#include <algorithm>
#include <array>
#include <iostream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "qvn/result_codes.h"
#include "qvn/transport/attributes.h"
#include "shared/client/devices.h"
#include "shared/client/failure.h"
#include "shared/client/leave.h"

namespace qvn::cli {

// As people know the device: by its port name, or "printer 7".
inline std::string knownAs(const Session& session, const Device& device) {
  const std::string portName = readText(session, device, attribute::kPortname);
  return portName.empty() ? device.text() : portName;
}

// An object of the type for each device that was named; of all that are stored for those that can be heard.
// Its constructor takes the session and the device, and throws Failure for one that cannot. Its `ask` puts a
// question to the device, which connects again where the connection was lost, and gives the result.
template <typename Watched>
class AllHeard {
 public:
  // Tells people when it listens.
  AllHeard(const Session& session, const DeviceKind& kind, const std::vector<std::string>& names)
      : session_(session) {
    std::vector<Device> devices;
    devices.reserve(names.size());
    for (const std::string& name : names) devices.push_back(selectNamed(session, kind, name));
    if (names.empty()) devices = listDevices(session, kind, "ALL_TRANSPORT");
    for (const Device& device : devices) {
      try {
        const LeaveOnInterrupt connecting("interrupted while connecting to " + device.text());
        auto watched = std::make_unique<Watched>(session, device);
        heard_.push_back({std::move(watched), device, false});
      } catch (const Failure& failure) {
        if (!names.empty()) throw;
        std::cerr << "qvn: " << failure.what() << '\n';
      }
    }
    if (heard_.empty()) throw Failure(std::string("there is no ") + kind.name + " to watch");
    std::cerr << "watching " << heard_.size() << ' ' << kind.name << (heard_.size() == 1 ? "\n" : "s\n");
  }

  // Whether the devices are still there, which nothing tells: a connection that ends makes no event.
  void askAll() {
    const LeaveOnInterrupt asking("stopped watching");
    for (Heard& one : heard_) {
      const std::uint32_t result = one.watched->ask();
      const bool lost = std::find(kThere.begin(), kThere.end(), result) == kThere.end();
      if (lost == one.lost) continue;
      one.lost = lost;
      const std::string name = knownAs(session_, one.device);
      if (lost) {
        std::cerr << "connection to " << name
                  << " lost, trying again: " << describeResult(result, placeOf(session_, one.device)) << '\n';
      } else {
        std::cerr << "watching " << name << " again\n";
      }
    }
  }

 private:
  // What a device answers that is there, one that has no answer or is in use included.
  static constexpr std::array<std::uint32_t, 5> kThere = {QRN_ERROR_SUCCESS, QRN_ERROR_INVALID_FUNCTION,
                                                          QRN_ERROR_ACCESS_DENIED, QRN_ERROR_DUP_NAME,
                                                          QRN_ERROR_BUSY};

  struct Heard {
    std::unique_ptr<Watched> watched;
    Device device;
    bool lost;
  };

  const Session& session_;
  std::vector<Heard> heard_;
};

}  // namespace qvn::cli
