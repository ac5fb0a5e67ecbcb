#include "object_source.h"

#include <sys/socket.h>

#include <algorithm>
#include <functional>
#include <vector>

namespace qvn::bench {
namespace {

// Sent at once; small enough for the processor's caches, as what a scanner has just read is.
constexpr std::uint64_t kBlocksAtOnce = 8;

constexpr std::string_view kScanData = "<Scan.Data>";

std::string between(std::string_view document, std::string_view open, std::string_view close) {
  const std::size_t begin = document.find(open);
  if (begin == std::string_view::npos) return {};
  const std::size_t from = begin + open.size();
  return std::string(document.substr(from, document.find(close, from) - from));
}

std::string response(const std::string& id, const std::string& value) {
  return ObjectSource::block("<?xml version=\"1.0\"?>\r\n<response requestID=\"" + id + "\">" + value +
                             "</response>\r\n");
}

std::string notification(const std::string& observer, const std::string& object, const std::string& event,
                         const std::string& data) {
  return ObjectSource::block("<?xml version=\"1.0\"?>\r\n<method name=\"event\"><arg name=\"observer\">" +
                             observer + "</arg><arg name=\"objName\">" + object +
                             "</arg><arg name=\"event\">" + event + "</arg><arg name=\"data\">" + data +
                             "</arg></method>\r\n");
}

std::string systemUpdate(const std::string& text) {
  return notification("Observer_System", "system", "systemUpdate", "<StringElem>" + text + "</StringElem>");
}

std::string scanData(std::uint64_t length) {
  return ObjectSource::block(std::string(kScanData) + std::string(length, 'Z'));
}

void send(int connection, std::string_view bytes) { sendAll(connection, bytes.data(), bytes.size()); }

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
    send(connection,
         notification(observer, "Job_1", "stateChanged",
                      "<MapElem><child name=\"job type\"><StringElem>ScanJob</StringElem></child>"
                      "<child name=\"state\"><StringElem>Complete</StringElem></child></MapElem>") +
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
    const std::string id = between(document, "requestID=\"", "\"");
    const std::string method = between(document, "<arg name=\"method\">", "</arg>");
    if (between(document, "<arg name=\"event\">", "</arg>") == "stateChanged") {
      observer = between(document, "<arg name=\"observer\">", "</arg>");
    }
    const bool creates = method == "create";
    send(connection,
         response(id, creates ? "<StringElem>Job_1</StringElem>" : "<IntegerElem>0</IntegerElem>"));
    if (method == "enterHostUSBSendMode") send(connection, systemUpdate("Enter HostSend OK"));
    if (method == "exitHostUSBSendMode") send(connection, systemUpdate("HostSend Exited"));
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
