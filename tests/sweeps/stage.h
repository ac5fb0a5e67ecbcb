// Devices of every family on the fake transport, which do what such devices do, and what the clients hear.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "qvn/qvn.h"
#include "support/fake_transport.h"
#include "support/library_fixture.h"

namespace qvn::test {

// The handles. The scanner 407 is part of the same device as the printer 7.
inline constexpr std::uint32_t kPrinter = 7, kOtherPrinter = 17, kBpdPrinter = 8, kPlainPrinter = 9;
inline constexpr std::uint32_t kScanner = 407, kBpdScanner = 408, kOtherBpdScanner = 418, kHid = 807,
                               kOtherHid = 817;

// How a transport's call fails.
inline constexpr std::uint32_t kFailure = 64;

inline const std::string kEndOfJob("\x1B\x2A\x82\x00\x00\x00\x00\xAC", 8);
inline const Data kScanBlock = bytes({0x1B, 's', 'd', 1, 0, 0, 0, 0, 9});
inline const Data kScanStatus = bytes({0x1B, 'S', 'S', 0, 0, 0, 0, 0});
inline const Data kPanelAlert = bytes({0xA5, 0, 5, 0, 0xF0, 0xE1, 0, 0});
inline constexpr std::uint32_t kPanelAlerts = 0x80000;

// The functions of one kind of device.
struct Kind {
  std::uint32_t (*open)(std::uint32_t, std::uint32_t);
  std::uint32_t (*close)(std::uint32_t, std::uint32_t);
  std::uint32_t (*remove)(std::uint32_t, std::uint32_t);
};
const Kind& kindOf(std::uint32_t handle);

// What happens, in order.
class Stage {
 public:
  Stage();
  ~Stage();
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;

  static void store(const std::vector<std::uint32_t>& handles);
  static void set(const std::string& setting, std::uint32_t value);

  static std::string transportModule();

  std::uint32_t did(const std::string& what, std::uint32_t rc) {
    note(what + " " + std::to_string(rc));
    return rc;
  }
  void note(const std::string& line);
  std::vector<std::string> take();
  // What comes after a line that begins so has been heard, within the time that the CaseWatch gives.
  bool await(const std::string& prefix);

  // Every callback notes what it heard, in this form, and then does this: "notification 4", "alert",
  // "scan data", "scan 1000 dots", "report", "event", "found 7", "queue Lab".
  std::function<void(const std::string& heard, std::uint32_t clientId)> onHeard;

  // Registers the client for everything that the device tells.
  void listen(std::uint32_t clientId, std::uint32_t handle);
  static void unlisten(std::uint32_t clientId, std::uint32_t handle);

  // What a device tells unasked. The result is the device's.
  std::uint32_t tell(std::uint32_t handle, const std::string& block);
  std::uint32_t tellState(std::uint32_t handle, const std::string& state);
  void tellEvent(std::uint32_t handle, std::uint32_t id);

  // Of a Bpd scanner: no job can be made.
  std::atomic<bool> failsJobs{false};
  // Of a printer: it takes no data, and it has a channel for the cache.
  std::atomic<bool> failsWrites{false};
  std::atomic<bool> hasCacheChannel{false};

  FakeTransport& fake = FakeTransport::instance();

 private:
  static std::optional<Data> reply(const Data& request);
  std::optional<Data> answer(const std::string& document);
  std::uint32_t visit(const std::string& visitor, Data* data);

  std::mutex mutex_;
  std::vector<std::string> lines_;
};

// The callbacks, which find the stage by themselves.
namespace heard {
void device(std::uint32_t clientId, std::uint32_t handle);
void queue(std::uint32_t clientId, const char* printer, const char* port);
void alert(std::uint32_t handle, const std::uint8_t* alert, std::uint32_t length, std::uint32_t clientId);
void notification(std::uint32_t handle, std::uint32_t category, std::uint32_t id, const std::uint8_t* data,
                  std::uint32_t length, std::uint32_t clientId);
std::uint32_t scan(std::uint32_t clientId, std::uint32_t job, std::uint32_t handle, std::uint32_t event,
                   const std::uint8_t* data, std::uint32_t length);
void report(std::uint32_t clientId, std::uint32_t handle, const std::uint8_t* report, std::uint32_t length);
}  // namespace heard

}  // namespace qvn::test
