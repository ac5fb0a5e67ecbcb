#include "support/simulator/object_host.h"

#include <stdexcept>
#include <utility>

#include "support/store_documents.h"

namespace qvn::test {
namespace {

constexpr std::string_view kDataTag = "<Scan.Data>";

std::size_t big32(const Bytes& bytes, std::size_t offset) {
  std::size_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) value = value << 8 | bytes.at(offset + i);
  return value;
}

// Data blocks in a row are told once.
void add(std::vector<std::string>& all, std::string words) {
  if (words != kDataTag || all.empty() || all.back() != kDataTag) all.push_back(std::move(words));
}

// The text of the first element of a kind.
std::string valueIn(std::string_view text) {
  const std::string integer = between(text, "<IntegerElem>", "<");
  return integer.empty() ? between(text, "<StringElem>", "<") : integer;
}

}  // namespace

std::string integerElement(std::int64_t value) {
  return "<IntegerElem>" + std::to_string(value) + "</IntegerElem>";
}

std::string mapElement(const std::vector<std::pair<std::string, std::string>>& children) {
  std::string text = "<MapElem>";
  for (const auto& [name, value] : children) {
    text += "\r\n    <child name=\"" + name + "\">\r\n      " + value + "\r\n    </child>";
  }
  return text + "\r\n  </MapElem>";
}

std::string scanParameters(const ObjectScan& scan) {
  const auto point = [](int x, int y) {
    return mapElement({{"x", integerElement(x)}, {"y", integerElement(y)}});
  };
  const ScanArea& area = scan.area;
  return mapElement(
      {{"documentParameters", mapElement({{"compression", integerElement(0)}})},
       {"scanParameters",
        mapElement({{"bitdepth", integerElement(scan.bits)},
                    {"orientation", integerElement(0)},
                    {"resolution", integerElement(scan.dpi)},
                    {"scanWindow",
                     mapElement({{"bottomRight", point(area.left + area.width, area.top + area.height)},
                                 {"topLeft", point(area.left, area.top)}})},
                    {"source", integerElement(scan.source)}})},
       {"usbParameters", mapElement({})}});
}

std::string createParameters(const std::string& tree) {
  return "<ListElem>\r\n    <StringElem>HostSendJob</StringElem>\r\n    " + tree + "\r\n  </ListElem>";
}

Bytes blockOf(const Bytes& payload) {
  Bytes header = {0x42, 0x4B, 1, 0};
  for (const int shift : {24, 16, 8, 0}) header.push_back(payload.size() >> shift & 0xFF);
  return header + payload;
}

void ObjectHost::call(std::string_view object, std::string_view method, std::string_view params) {
  sendMethod("callMethod", object, method,
             "<arg name=\"params\">\r\n  " + std::string(params) + "\r\n</arg>");
}

void ObjectHost::addObserver(std::string_view object, std::string_view event, std::string_view observer) {
  sendMethod("addObserver", object, event, "<arg name=\"observer\">" + std::string(observer) + "</arg>");
}

void ObjectHost::removeObserver(std::string_view object, std::string_view event, std::string_view observer) {
  sendMethod("removeObserver", object, event, "<arg name=\"observer\">" + std::string(observer) + "</arg>");
}

void ObjectHost::sendMethod(std::string_view method, std::string_view first, std::string_view second,
                            const std::string& third) {
  const std::string_view secondName = method == "callMethod" ? "method" : "event";
  std::string text = "<?xml version=\"1.0\"?>\r\n<method name=\"";
  text += method;
  text += "\" requestID=\"" + std::to_string(++id_) + "\">\r\n  <arg name=\"objName\">";
  text += first;
  text += "</arg>\r\n  <arg name=\"";
  text += secondName;
  text += "\">";
  text += second;
  text += "</arg>\r\n  " + third + "\r\n</method>\r\n";
  send(text);
}

std::string ObjectHost::receive() {
  const Bytes header = stream_.receive(8);
  if (header.size() < 8) return "ended";
  payload_ = stream_.receive(big32(header, 4));
  if (toHex(header).starts_with("42 4B 02 00")) return "read error " + std::to_string(big32(payload_, 0));
  if (!toHex(header).starts_with("42 4B 01 00")) throw std::runtime_error("no block: " + toHex(header));
  // A frame is only skipped when it is one.
  const bool isFramed =
      payload_.size() > 8 && payload_[0] >= 0xAA && big32(payload_, 4) == payload_.size() - 8;
  const std::string whole = text();
  const std::string_view document = std::string_view(whole).substr(isFramed ? 8 : 0);
  if (document.starts_with(kDataTag)) {
    data.insert(data.end(), payload_.begin() + kDataTag.size(), payload_.end());
    dataLengths.push_back(payload_.size() - kDataTag.size());
    return std::string(kDataTag);
  }
  if (!document.starts_with("<?xml version=\"1.0\"?>")) return std::string(document);
  if (document.find("<method ") != std::string_view::npos) {
    // Of a map the entry that is no "job type".
    const std::size_t entry = document.find("<child name=\"s");
    return between(document, "<arg name=\"event\">", "<") + " " +
           valueIn(document.substr(entry == std::string_view::npos ? 0 : entry));
  }
  repliedId_ = between(document, "requestID=\"", "\"");
  const bool wasAsked =
      repliedId_.size() == 6 && repliedId_ >= std::to_string(kFirstId) && repliedId_ <= std::to_string(id_);
  const std::string asked = wasAsked ? "" : " to " + repliedId_;
  if (document.find("<exception ") != std::string_view::npos) return "exception" + asked;
  return "response" + asked + " " + valueIn(document);
}

std::vector<std::string> ObjectHost::receiveUntil(std::string_view words) {
  std::vector<std::string> all;
  do {
    add(all, receive());
  } while (all.back() != words && all.back() != "ended");
  return all;
}

std::vector<std::string> ObjectHost::receiveAll() {
  call("nothing", "nothing");
  std::vector<std::string> all;
  for (;;) {
    std::string words = receive();
    if (words == "ended" || (words == "exception" && repliedId_ == std::to_string(id_))) return all;
    add(all, std::move(words));
  }
}

void ObjectHost::expect(std::string_view words) {
  const std::string came = receive();
  if (came != words) throw std::runtime_error(came + " instead of " + std::string(words));
}

void ObjectHost::observe(std::string_view object, std::string_view event, std::string_view observer) {
  addObserver(object, event, observer);
  expect("response 0");
}

void ObjectHost::enterHostMode() {
  observe("system", "systemUpdate", "Observer_System");
  call("system", "enterHostUSBSendMode", scanParameters({}));
  expect("response 0");
  expect("systemUpdate Enter HostSend OK");
}

std::string ObjectHost::createJob(const ObjectScan& scan) {
  call("jobFactory", "create", createParameters(scanParameters(scan)));
  const std::string words = receive();
  if (!words.starts_with("response HostSendJob_")) throw std::runtime_error(words);
  const std::string job = words.substr(std::string_view("response ").size());
  for (const char* event : {"stateChanged", "pageScanned"}) observe(job, event);
  return job;
}

void ObjectHost::startJob(const std::string& job) {
  call(job, "start");
  expect("response 0");
}

}  // namespace qvn::test
