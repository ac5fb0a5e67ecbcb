// A Cpd scanner on the fake transport.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "scanner/cpd/cpd_scanner.h"
#include "scanner/cpd/cpd_scanner_async_data_manager.h"
#include "support/library_fixture.h"
#include "support/manual_clock.h"

namespace qvn::test {

// What the clients' callback got: "client/mask: bytes".
class ReceivedScanData {
 public:
  static std::vector<std::string> take() {
    std::lock_guard<std::mutex> lock(mutex_);
    return std::exchange(received_, {});
  }

  // What a client does inside its next callback.
  static inline std::function<void()> onCall;

  static std::uint32_t callback(std::uint32_t clientId, std::uint32_t job, std::uint32_t handle,
                                std::uint32_t mask, const std::uint8_t* data, std::uint32_t length) {
    EXPECT_EQ(job, 0u);
    EXPECT_EQ(handle, 407u);
    if (const auto call = std::exchange(onCall, nullptr)) call();
    std::lock_guard<std::mutex> lock(mutex_);
    received_.push_back(std::to_string(clientId) + "/" + std::to_string(mask) + ": " +
                        std::string(reinterpret_cast<const char*>(data), length));
    return 0;
  }

 private:
  static inline std::mutex mutex_;
  static inline std::vector<std::string> received_;
};

inline std::string received(const Data& data) { return "1/16: " + asText(data); }

template <typename Clock>
class ScannerTest : public Clock, public LibraryTest {
 protected:
  ScannerTest() {
    ReceivedScanData::take();
    makeScanner();
  }

  ~ScannerTest() override { closeScanner(); }

  void closeScanner() {
    while (scanner->openCount() > 0) scanner->doClose();
  }

  void makeScanner() {
    scanner = std::make_unique<CpdScanner>();
    scanner->setAttributes(FakeTransport::deviceText("CpdScanner", 407));
  }

  void startScan() {
    ASSERT_EQ(scanner->doOpen(), 0u);
    scanner->doRegisterForAsyncData({16, 1, ReceivedScanData::callback});
    ASSERT_EQ(scanner->doStartJob(1, nullptr), 0u);
    fake.takeCalls();
  }

  // Data that comes now is nobody's.
  bool refusesData() {
    Data data = block(1);
    scanner->doAccept(data);
    return data.getRc() == 1;
  }

  static Data status(int code) { return bytes({0x1B, 'S', 'S', code, 0, 0, 0, 0}); }
  static Data block(int byte) { return bytes({0x1B, 's', 'd', 1, 0, 0, 0, 0, byte}); }

  std::unique_ptr<CpdScanner> scanner;
};

// Skips over every wait.
class CpdScannerTest : public ScannerTest<SkippingClock> {};

// Time stands still: a wait ends by what it waits for, or never.
class WaitingCpdScannerTest : public ScannerTest<StandingClock> {};

}  // namespace qvn::test
