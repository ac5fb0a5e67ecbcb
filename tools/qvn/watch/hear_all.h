// The devices that a command listens to.
#pragma once

#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "shared/client/devices.h"
#include "shared/client/failure.h"

namespace qvn::cli {

// An object for each device that was named; of all that are stored for those that can be heard. Its
// constructor takes the session and the device, and throws Failure for one that cannot. Tells people when it
// listens.
template <typename Watched>
std::vector<std::unique_ptr<Watched>> hearAll(const Session& session, const DeviceKind& kind,
                                              const std::vector<std::string>& names) {
  std::vector<Device> devices;
  devices.reserve(names.size());
  for (const std::string& name : names) devices.push_back(selectNamed(session, kind, name));
  if (names.empty()) devices = listDevices(session, kind, "ALL_TRANSPORT");
  std::vector<std::unique_ptr<Watched>> watched;
  for (const Device& device : devices) {
    try {
      watched.push_back(std::make_unique<Watched>(session, device));
    } catch (const Failure& failure) {
      if (!names.empty()) throw;
      std::cerr << "qvn: " << failure.what() << '\n';
    }
  }
  if (watched.empty()) throw Failure(std::string("there is no ") + kind.name + " to watch");
  std::cerr << "watching " << watched.size() << ' ' << kind.name << (watched.size() == 1 ? "\n" : "s\n");
  return watched;
}

}  // namespace qvn::cli
