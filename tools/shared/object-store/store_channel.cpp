#include "shared/object-store/store_channel.h"

#include <atomic>
#include <string_view>

#include "api/system.h"
#include "bidi/element/map_elem.h"
#include "bidi/object_store/received_message.h"
#include "bidi/object_store/store_messages.h"
#include "bidi/xml/xml_message_parser.h"
#include "common/exception.h"
#include "common/settings/localize.h"
#include "common/threads/event.h"
#include "device/store/scanner_store.h"
#include "qvn/qvn.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "scanner/bpd/bpd_scanner.h"
#include "scanner/bpd/scan_block.h"

namespace qvn::object_store {
namespace {

constexpr char kObserver[] = "qvn";
constexpr char kSystem[] = "system";
constexpr char kSystemUpdate[] = "systemUpdate";
constexpr platform::Milliseconds kHostModeWait = 15000;  // as long as the transport waits for a reply

std::string attributesOf(std::uint32_t handle) {
  std::string attributes;
  if (ScannerStore::getInstance().read(handle, attributes) != QRN_ERROR_SUCCESS) {
    throw StoreError("there is no scanner " + std::to_string(handle));
  }
  std::string family;
  AttributeCodec::getString(attributes, attribute::kDevice, family);
  if (family != "BpdScanner") {
    throw StoreError("scanner " + std::to_string(handle) + " has no object store: it is no Bpd scanner");
  }
  return attributes;
}

// What an exception says; empty when it says nothing. The reader of documents does not keep it, but reads it
// as the text of a response.
std::string messageIn(const std::string& exception) {
  constexpr std::string_view kBegin = "<message>";
  const std::size_t begin = exception.find(kBegin);
  const std::size_t end = exception.rfind("</message>");
  if (begin == std::string::npos || end == std::string::npos || end < begin + kBegin.size()) return {};
  const std::string text = exception.substr(begin + kBegin.size(), end - begin - kBegin.size());
  return classifyMessage("<?xml version=\"1.0\"?><response requestID=\"0\"><StringElem>" + text +
                         "</StringElem></response>")
      .result;
}

// The result in a response; null when it has none.
std::unique_ptr<Element> resultIn(const std::string& response) {
  XMLMessageParser parser;
  try {
    parser.parse(response.data(), static_cast<std::uint32_t>(response.size()));
  } catch (const Win32Exception& exception) {
    throw StoreError("the scanner's response cannot be read: " + exception.getMessage());
  }
  const std::unique_ptr<MapElem> message = parser.takeMessage();
  if (message == nullptr) throw StoreError("the scanner's response cannot be read");
  return message->find("result") == nullptr ? nullptr : message->removeChild("result");
}

}  // namespace

// The library's services in this process, and the scanner that uses them.
struct StoreChannel::Library {
  Library() {
    // The registry is that of the installed library, whose module has this function.
    Localize::createInstance(reinterpret_cast<const void*>(&QvnInitialize));
    System::getInstance();
    scanner = std::make_unique<BpdScanner>();
  }
  ~Library() {
    scanner.reset();
    System::destroyInstance();
  }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  std::unique_ptr<BpdScanner> scanner;
};

class StoreChannel::Listener : public Observer {
 public:
  Listener(Subject& device, std::function<void(const StoreEvent&)> onEvent)
      : device_(device), onEvent_(std::move(onEvent)) {
    attachTo(device_);
  }
  ~Listener() override {
    detachFrom(device_);
    device_.waitForUpdates(*this);
  }

 protected:
  using Observer::doUpdate;
  void doUpdate(Data& data) override {
    const ScanBlock block = readScanBlock(data);
    switch (block.kind) {
      case ScanBlock::Kind::None:
      case ScanBlock::Kind::ScanData:
        return;
      case ScanBlock::Kind::Document:
        takeDocument(block.text);
        return;
      default:
        onEvent_({std::string(block.tag), {}, {}, {}, nullptr});
    }
  }

 private:
  void takeDocument(std::string_view document) {
    auto notification = readNotification(document);
    if (!notification) return;
    onEvent_({{},
              std::move(notification->observer),
              std::move(notification->objName),
              std::move(notification->event),
              std::move(notification->data)});
  }

  Subject& device_;
  const std::function<void(const StoreEvent&)> onEvent_;
};

StoreChannel::StoreChannel(std::uint32_t handle, std::function<void(const StoreEvent&)> onEvent)
    : library_(std::make_unique<Library>()) {
  BpdScanner& scanner = *library_->scanner;
  scanner.setAttributes(attributesOf(handle));
  const std::uint32_t rc = scanner.doOpen();
  if (rc != QRN_ERROR_SUCCESS) throw StoreError("cannot open scanner " + std::to_string(handle), rc);
  if (onEvent) listener_ = std::make_unique<Listener>(scanner, std::move(onEvent));
}

StoreChannel::~StoreChannel() {
  for (const auto& [object, event] : observed_) {
    try {
      library_->scanner->objectStore().exchange(removeObserver(object, event, kObserver));
    } catch (...) {
      // The device goes on telling nobody.
    }
  }
  if (isInHostMode_) {
    try {
      library_->scanner->objectStore().exchange(callMethod(kSystem, "exitHostUSBSendMode", nullptr));
    } catch (...) {
      // It ends with the connection.
    }
  }
  listener_.reset();
}

void StoreChannel::enterHostMode() {
  Event told(true, false, "", false);
  std::atomic<bool> entered = false;
  const Listener listener(*library_->scanner, [&](const StoreEvent& event) {
    if (event.event != kSystemUpdate || event.data == nullptr) return;
    const std::string text = event.data->stringValue();
    if (text != "Enter HostSend OK" && text != "Enter HostSend Fail") return;
    entered = text == "Enter HostSend OK";
    told.set();
  });
  observe(kSystem, kSystemUpdate);
  const auto result = call(kSystem, "enterHostUSBSendMode", std::make_unique<MapElem>().get());
  if (result != nullptr && result->intValue() != 0) {
    throw StoreError("the scanner does not go into host mode: another host may have it");
  }
  isInHostMode_ = true;
  if (!told.wait(kHostModeWait)) throw StoreError("the scanner does not tell that it is in host mode");
  if (!entered) throw StoreError("the scanner could not go into host mode");
}

std::unique_ptr<Element> StoreChannel::call(const std::string& object, const std::string& method,
                                            const Element* params) {
  std::string response;
  const std::uint32_t rc =
      library_->scanner->objectStore().exchange(callMethod(object, method, params), response);
  if (classifyMessage(response).type == MessageType::Exception) {
    const std::string message = messageIn(response);
    throw StoreError("the scanner answered " + object + "." + method + " with an exception" +
                     (message.empty() ? "" : ": " + message));
  }
  if (rc != QRN_ERROR_SUCCESS) throw StoreError("the call of " + object + "." + method + " failed", rc);
  return resultIn(response);
}

void StoreChannel::observe(const std::string& object, const std::string& event) {
  const std::uint32_t rc = library_->scanner->objectStore().exchange(addObserver(object, event, kObserver));
  if (rc == QRN_ERROR_INVALID_PARAMETER) {
    throw StoreError("the scanner has no event " + event + " of an object " + object);
  }
  if (rc != QRN_ERROR_SUCCESS) throw StoreError("cannot observe " + object, rc);
  observed_.emplace_back(object, event);
}

}  // namespace qvn::object_store
