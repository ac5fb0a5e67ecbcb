// A service of which the process has one, made on first use and taken down by System (api/system.h), which
// lists them all with the order of their birth and death.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>

namespace qvn {

// `class Service : public ProcessService<Service>`, with a default constructor that Service makes private and
// its friend.
template <typename Service>
class ProcessService {
 public:
  ProcessService(const ProcessService&) = delete;
  ProcessService& operator=(const ProcessService&) = delete;

  // Test, lock, test again, create.
  static Service& getInstance() {
    Service* service = instance_.load(std::memory_order_acquire);
    if (service == nullptr) {
      std::lock_guard<std::mutex> lock(mutex_);
      service = instance_.load(std::memory_order_relaxed);
      if (service == nullptr) {
        service = new Service();
        instance_.store(service, std::memory_order_release);
      }
    }
    return *service;
  }

  // No thread may use the service any more. Does nothing when there is none.
  static void destroyInstance() {
    Service* service = nullptr;
    {
      std::lock_guard<std::mutex> lock(mutex_);
      service = instance_.exchange(nullptr);
    }
    // Its end may wait for a thread that asks for the service.
    delete service;
  }

 protected:
  ProcessService() = default;
  ~ProcessService() = default;

 private:
  static inline std::atomic<Service*> instance_{nullptr};
  static inline std::mutex mutex_;
};

}  // namespace qvn
