#include "peers/object_source.h"

#include <sys/socket.h>

#include <algorithm>
#include <functional>
#include <vector>

#include "support/store_documents.h"

namespace qvn::bench {
namespace {

// Sent at once; small enough for the processor's caches, as what a scanner has just read is.
constexpr std::uint64_t kBlocksAtOnce = 8;

constexpr std::string_view kScanData = "<Scan.Data>";

std::string scanData(std::uint64_t length) {
  return ObjectSource::block(std::string(kScanData) + std::string(length, 'Z'));
}

void send(int connection, std::string_view bytes) { sendAll(connection, bytes.data(), bytes.size()); }

void sendUpdate(int connection, const std::string& text) {
  send(connection, ObjectSource::block(test::systemUpdate(text)));
}

class Job {
 public:
  void sendPage(int connection) const {
    send(connection, ObjectSource::block("<Job.Start>") + ObjectSource::block("<Page.Start>"));
    for (std::uint64_t left = ObjectSource::kBlocks - 1; left > 0;) {
      const std::uint64_t count = std::min(left, kBlocksAtOnce);
      send(connection, std::string_view(blocks_).substr(0, count * blocks_.size() / kBlocksAtOnce));
      left -= count;
    }
    send(connection, last_ + ObjectSource::block("<Page.End>"));
  }

  // What tells the end; the observer is the host's, which tells it when it begins to observe.
  void sendEnd(int connection, const std::string& observer) const {
    const std::string complete = test::entries("ScanJob", "state", "Complete");
    send(connection, ObjectSource::block(test::notification(observer, "Job_1", "stateChanged", complete)) +
                         ObjectSource::block("<Job.End>"));
  }

 private:
  static std::string manyBlocks() {
    std::string blocks;
    for (std::uint64_t i = 0; i < kBlocksAtOnce; ++i) blocks += scanData(ObjectSource::kPayload);
    return blocks;
  }

  const std::string blocks_ = manyBlocks();
  const std::string last_ =
      scanData(ObjectSource::kPageSize - (ObjectSource::kBlocks - 1) * ObjectSource::kPayload);
};

bool receiveBlock(int connection, std::string& payload) {
  std::array<std::uint8_t, ObjectSource::kHeader> header{};
  if (recv(connection, header.data(), header.size(), MSG_WAITALL) != static_cast<ssize_t>(header.size())) {
    return false;
  }
  payload.resize(ObjectSource::payloadLength(header.data()));
  return recv(connection, payload.data(), payload.size(), MSG_WAITALL) ==
         static_cast<ssize_t>(payload.size());
}

void serve(int listener, int control, bool isSilent) {
  const Job job;
  std::string document;
  std::string observer;
  const auto answer = [&](int connection) {
    if (!receiveBlock(connection, document)) return false;
    const std::string method = test::argument(document, "method");
    if (test::argument(document, "event") == "stateChanged") observer = test::argument(document, "observer");
    const std::string result = method == "create" ? test::text("Job_1") : test::number(0);
    send(connection, ObjectSource::block(test::response(test::requestId(document), result)));
    if (method == "enterHostUSBSendMode") sendUpdate(connection, "Enter HostSend OK");
    if (method == "exitHostUSBSendMode") sendUpdate(connection, "HostSend Exited");
    if (method == "start" && !isSilent) job.sendPage(connection);
    if (method == "cancel" || (method == "start" && !isSilent)) job.sendEnd(connection, observer);
    return true;
  };
  serveConnections(
      listener, control, [](const std::vector<int>&) { return false; }, answer);
}

}  // namespace

ObjectSource::ObjectSource(bool isSilent)
    : peer_([isSilent](int listener, int control) { serve(listener, control, isSilent); }) {}

std::string ObjectSource::block(std::string_view payload) {
  const std::size_t length = payload.size();
  std::string block = {'\x42', '\x4B', '\x01', '\x00'};
  for (const int shift : {24, 16, 8, 0}) block += static_cast<char>(length >> shift);
  return block.append(payload);
}

std::size_t ObjectSource::payloadLength(const std::uint8_t* header) {
  return std::size_t{header[4]} << 24 | std::size_t{header[5]} << 16 | std::size_t{header[6]} << 8 |
         header[7];
}

}  // namespace qvn::bench
