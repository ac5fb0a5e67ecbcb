// What tests of connections have in common: the module, and a device that notes what comes.
#pragma once

#include <gmock/gmock.h>

#include <atomic>
#include <optional>
#include <thread>
#include <vector>

#include "support/transport/logging_device.h"
#include "support/transport/transport_module.h"

namespace qvn::test {

// For tests that wait for it.
inline constexpr std::uint32_t kShortTimeout = 200;

inline constexpr ExchangeResult kReplied{0, 0};
inline constexpr ExchangeResult kNoReply{0, 1460};
inline constexpr ExchangeResult kLost{64, 64};

class ConnectionTest : public testing::Test {
 protected:
  ConnectionTest() {
    installSettings();
    module.emplace();
  }
  ~ConnectionTest() override { module.reset(); }

  // A thread for each request, which asks 50 times; every exchange gets its reply.
  void askFromThreads(Connectable& connection, const std::vector<const char*>& requests,
                      const char* visitorName) {
    std::atomic<std::size_t> replies{0};
    std::vector<std::thread> clients;
    for (const char* request : requests) {
      clients.emplace_back([&, request] {
        for (int i = 0; i < 50; ++i) {
          if (exchange(*module, connection, device, request, visitorName) == kReplied) ++replies;
        }
      });
    }
    for (std::thread& client : clients) client.join();
    EXPECT_EQ(replies, requests.size() * 50);
    EXPECT_EQ(device.deliveries().size(), replies);
  }

  LoggingDevice device;
  std::optional<TransportModule> module;
};

}  // namespace qvn::test
