// Looks for announced services within a time that holds even when the mDNS daemon, or the bus to it, does not
// answer: the calls to them then take as long as they like (D-Bus waits 25 s) on a thread of their own.
#pragma once

#include <chrono>
#include <future>
#include <mutex>
#include <string>
#include <vector>

#include "discovery/services.h"

namespace qvn::ipv4 {

class ServiceSearches {
 public:
  struct Search {
    std::future<std::vector<Service>> services;
    ServiceDeadline deadline;
  };

  // Looks for the service of that name, for all with an empty one. While an earlier search hangs none is
  // begun.
  Search begin(const std::string& name, std::chrono::milliseconds timeout);

  // What it found until its deadline.
  std::vector<Service> end(Search search);

  // Waits for the searches that hang.
  void join();

 private:
  std::mutex mutex_;
  std::vector<std::future<std::vector<Service>>> hanging_;
};

}  // namespace qvn::ipv4
