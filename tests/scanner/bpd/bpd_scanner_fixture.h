// A Bpd scanner on the fake transport, whose device answers documents as a test has it do.
#pragma once

#include <gmock/gmock.h>

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "scanner/bpd/bpd_scanner.h"
#include "support/library_fixture.h"
#include "support/manual_clock.h"
#include "support/process/eventually.h"
#include "support/store_documents.h"

namespace qvn::test {

// What the clients' callback got: "client/job/event: text".
class ReceivedBpdData {
 public:
  static std::vector<std::string> take() {
    std::lock_guard<std::mutex> lock(mutex_);
    return std::exchange(received_, {});
  }
  static std::vector<std::string> all() {
    std::lock_guard<std::mutex> lock(mutex_);
    return received_;
  }

  // What a client does inside its callback.
  static inline std::function<void(const std::string& received)> onCall;

  static std::uint32_t callback(std::uint32_t clientId, std::uint32_t job, std::uint32_t handle,
                                std::uint32_t event, const std::uint8_t* data, std::uint32_t length) {
    EXPECT_EQ(handle, 407u);
    char kind[16];
    std::snprintf(kind, sizeof kind, "%u/%u/%04X: ", clientId, job, event);
    const std::string line = kind + std::string(reinterpret_cast<const char*>(data), length);
    {
      std::lock_guard<std::mutex> lock(mutex_);
      received_.push_back(line);
    }
    if (onCall) onCall(line);
    return 0;
  }

 private:
  static inline std::mutex mutex_;
  static inline std::vector<std::string> received_;
};

class BpdScannerTest : public LibraryTest {
 protected:
  static constexpr std::uint32_t kEverything = 0x7000;

  BpdScannerTest() {
    ReceivedBpdData::take();
    scanner->setAttributes(FakeTransport::deviceText("BpdScanner", 407));
    fake.onExchange = [this](const Data& request) { return answer(asText(request)); };
  }
  ~BpdScannerTest() override {
    ReceivedBpdData::onCall = nullptr;
    fake.awaitsReplies = false;
    scanner.reset();
  }

  // The value of the response; "exception" and "nothing" are no values.
  void answerTo(const std::string& document, const std::string& value) {
    std::lock_guard<std::mutex> lock(mutex);
    answers[document] = value;
  }

  std::optional<Data> answer(const std::string& document) {
    const std::string what = summary(document);
    {
      std::lock_guard<std::mutex> lock(mutex);
      sent_.push_back(what);
    }
    if (const auto act = before.find(what); act != before.end()) act->second();
    const std::string value = answerOf(what);
    if (value == "nothing") return std::nullopt;
    if (value == "exception") return Data(exception(requestId(document)));
    return Data(response(requestId(document), value));
  }

  std::string answerOf(const std::string& what) {
    std::lock_guard<std::mutex> lock(mutex);
    const auto found = answers.find(what);
    return found == answers.end() ? number(0) : found->second;
  }

  std::vector<std::string> takeSent() {
    std::lock_guard<std::mutex> lock(mutex);
    return std::exchange(sent_, {});
  }
  std::vector<std::string> sent() {
    std::lock_guard<std::mutex> lock(mutex);
    return sent_;
  }

  void deliver(const std::string& block) { fake.deliver(Data(block)); }
  void deliverState(const std::string& state, const std::string& jobType = "ScanJob") {
    deliver(notification("407_Observer", "Job_1", "stateChanged", entries(jobType, "state", state)));
  }
  void deliverEnd() {
    deliverState("Complete");
    deliver("<Job.End>");
  }

  void openFor(std::uint32_t clientId = 1, std::uint32_t mask = kEverything) {
    ASSERT_EQ(scanner->doOpen(), 0u);
    ASSERT_EQ(scanner->doRegisterForAsyncData({mask, clientId, ReceivedBpdData::callback}), 0u);
  }
  void setParameter(const std::string& key, const std::string& value, std::uint32_t clientId = 1) {
    Data data("<0>" + key + "</0><1>" + value + "</1>");
    ASSERT_EQ(scanner->doExchangeData(clientId, data), 0u);
  }

  std::unique_ptr<BpdScanner> scanner = std::make_unique<BpdScanner>();
  std::map<std::string, std::string> answers = {{"callMethod jobFactory create", text("Job_1")}};
  // What the device does before it answers.
  std::map<std::string, std::function<void()>> before = {
      {"callMethod system enterHostUSBSendMode", [this] { deliver(systemUpdate("Enter HostSend OK")); }},
      {"callMethod system exitHostUSBSendMode", [this] { deliver(systemUpdate("HostSend Exited")); }},
      {"callMethod Job_1 cancel", [this] { deliverEnd(); }},
  };
  std::mutex mutex;

 private:
  std::vector<std::string> sent_;
};

}  // namespace qvn::test
