// Devices of every family on the fake transport, which do what such devices do, and a client that plays with
// them and notes what it did and heard.
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
inline constexpr std::uint32_t kScanner = 407, kBpdScanner = 408, kOtherBpdScanner = 418;
inline constexpr std::uint32_t kHid = 807, kOtherHid = 817;

// How a transport's call fails.
inline constexpr std::uint32_t kFailure = 64;

// Alerts of two kinds, of which a printer is told separately; the one that it sends is of the first.
inline constexpr std::uint32_t kPanelAlerts = 0x80000, kAlerts = kPanelAlerts | 0x100000;

// The functions of one kind of device.
struct Kind {
  const char* name;
  std::uint32_t (*open)(std::uint32_t, std::uint32_t);
  std::uint32_t (*close)(std::uint32_t, std::uint32_t);
  std::uint32_t (*remove)(std::uint32_t, std::uint32_t);
};
const Kind& kindOf(std::uint32_t handle);

class Stage {
 public:
  Stage();
  ~Stage();
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;

  // When the library is initialised.
  static void store(const std::vector<std::uint32_t>& handles);
  static void set(const std::string& setting, std::uint32_t value);

  // Plays on a device what the words say, one after the other: "Open StartJob Write EndJob Close". A word is
  // an exported function, without the kind of device, or something that the device does, see stage.cpp. Each
  // is noted with its result, the last of which is given.
  std::uint32_t play(std::uint32_t handle, const std::string& words);

  // Registers the client for everything that the device tells, and takes that back.
  static void listen(std::uint32_t clientId, std::uint32_t handle);
  static void listenNoMore(std::uint32_t clientId, std::uint32_t handle);

  // Every callback notes what it heard and by which client and then does this: "notification 4", "alert 7",
  // "scan data", "scan 1000 dots", "report", "event", "found 7", "queue Lab".
  std::function<void(const std::string& heard, std::uint32_t clientId)> onHeard;

  void note(const std::string& line);
  std::vector<std::string> take();
  // How many lines begin and end so.
  std::ptrdiff_t count(const std::string& beginning, const std::string& ending = "");

  // What the devices do from now on: the printer 7 takes no data, it has a channel for the cache, Bpd
  // scanners make no jobs.
  std::atomic<bool> failsWrites{false};
  std::atomic<bool> hasCacheChannel{false};
  std::atomic<bool> failsJobs{false};

  FakeTransport& fake = FakeTransport::instance();

 private:
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
