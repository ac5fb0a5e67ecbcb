// A host on the scan port of a simulated BpdPrinter: blocks, method documents, jobs.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/simulator/scan_host.h"
#include "support/simulator/simulator_process.h"
#include "support/simulator/test_sockets.h"

namespace qvn::test {

inline constexpr char kObserver[] = "7_Observer";
inline constexpr char kNoParams[] = "<ListElem>\r\n  </ListElem>";

// What a job is to scan.
struct ObjectScan {
  int dpi = 75;
  int bits = 8;
  int source = 0;  // 1: the feeder
  ScanArea area = {};
};

// Elements as hosts write them.
std::string integerElement(std::int64_t value);
std::string mapElement(const std::vector<std::pair<std::string, std::string>>& children);
std::string scanParameters(const ObjectScan& scan);
// The parameters of "create" for a tree of scan parameters.
std::string createParameters(const std::string& tree);

Bytes blockOf(const Bytes& payload);

class ObjectHost {
 public:
  explicit ObjectHost(const SimulatorProcess& device)
      : stream_(Stream::connect(device.address(), device.scanPort())) {}

  // Each sends a method document with the next id.
  void call(std::string_view object, std::string_view method, std::string_view params = kNoParams);
  void addObserver(std::string_view object, std::string_view event, std::string_view observer = kObserver);
  void removeObserver(std::string_view object, std::string_view event, std::string_view observer = kObserver);
  // Observes, which the device must accept; throws when it does not.
  void observe(std::string_view object, std::string_view event, std::string_view observer = kObserver);
  // Sends a payload in a block.
  void send(std::string_view payload) { stream_.send(blockOf(bytesOf(payload))); }

  // The next block, in a few words: "response 0", "exception", "stateChanged Warming", "<Page.Start>",
  // "read error 5", "ended" for the end of the connection. A reply with an id that this host never sent is
  // told with it: "response to 7 0". Data is "<Scan.Data>" and is added to `data`.
  std::string receive();
  // What comes up to and with those words. Data blocks in a row are told once.
  std::vector<std::string> receiveUntil(std::string_view words);
  // What comes up to and without the exception to a call that cannot be.
  std::vector<std::string> receiveAll();

  // Into the host mode, which is observed from then on, and further to a job that is observed. Throw when the
  // device does anything else.
  void enterHostMode();
  std::string createJob(const ObjectScan& scan);
  void startJob(const std::string& job);

  // The payload received last.
  const Bytes& payload() const { return payload_; }
  std::string text() const { return std::string(payload_.begin(), payload_.end()); }
  // The bodies of the data blocks received, one after the other, and how long each was.
  Bytes data;
  std::vector<std::size_t> dataLengths;

  Stream& stream() { return stream_; }

 private:
  void sendMethod(std::string_view method, std::string_view first, std::string_view second,
                  const std::string& third);
  void expect(std::string_view words);

  static constexpr std::uint32_t kFirstId = 123000;

  Stream stream_;
  std::uint32_t id_ = kFirstId - 1;
  std::string repliedId_;
  Bytes payload_;
};

}  // namespace qvn::test
