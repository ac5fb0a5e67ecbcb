#include "discovery/service_searches.h"

#include <utility>

#include "platform/threads/all_signals_blocked.h"

namespace qvn::ipv4 {
namespace {

// A search that keeps to its deadline ends about then, and its thread too.
constexpr std::chrono::milliseconds kGrace{200};

}  // namespace

ServiceSearches::Search ServiceSearches::begin(const std::string& name, std::chrono::milliseconds timeout) {
  const ServiceDeadline deadline = std::chrono::steady_clock::now() + timeout;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    std::erase_if(hanging_, [](const auto& services) {
      return services.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    });
    if (!hanging_.empty()) return {{}, deadline};
  }
  const platform::AllSignalsBlocked blocked;
  return {std::async(std::launch::async, findServices, name, deadline), deadline};
}

std::vector<Service> ServiceSearches::end(Search search) {
  if (!search.services.valid()) return {};
  if (search.services.wait_until(search.deadline + kGrace) == std::future_status::ready)
    return search.services.get();
  const std::lock_guard<std::mutex> lock(mutex_);
  hanging_.push_back(std::move(search.services));
  return {};
}

void ServiceSearches::join() {
  std::vector<std::future<std::vector<Service>>> all;  // goes last: it waits, without the lock
  const std::lock_guard<std::mutex> lock(mutex_);
  all.swap(hanging_);
}

}  // namespace qvn::ipv4
