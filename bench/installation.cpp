#include "installation.h"

#include <stdlib.h>

#include <algorithm>

#include "measure.h"
#include "platform/registry/registry.h"
#include "qvn/qvn.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"

namespace qvn::bench {

namespace registry = platform::registry;

namespace {

constexpr char kRoot[] = "Software\\Quorin Tools\\Qvn\\Local\\qr__\\";

registry::Key openKey(const std::string& key) {
  registry::Key opened;
  require(registry::createKey(registry::Hive::LocalMachine, kRoot + key, {true, true}, opened), "createKey");
  return opened;
}

std::string deviceText(const char* family, std::uint32_t handle, std::uint16_t channel) {
  std::string text;
  AttributeCodec::setString(text, attribute::kDevice, family);
  AttributeCodec::setLong(text, attribute::kHandle, handle);
  AttributeCodec::setString(text, attribute::kTransport, "IPv4");
  AttributeCodec::setString(text, attribute::kAddress, "127.0.0.1");
  AttributeCodec::setString(text, attribute::kPortname, "PORT" + std::to_string(handle));
  AttributeCodec::setLong(text, attribute::kChannelId, channel);
  return text;
}

std::string printerText(std::uint32_t handle, std::uint16_t printPort, std::uint16_t bidiPort) {
  std::string text = deviceText("CpdPrinter", handle, bidiPort);
  AttributeCodec::setLong(text, attribute::kIpPort, printPort);
  return text;
}

void store(const registry::Key& devices, std::uint32_t handle, const std::string& text) {
  require(registry::setValue(devices, std::to_string(handle), registry::ValueType::String, text), "setValue");
}

}  // namespace

Installation::Installation() {
  setenv("QVN_TRANSPORT_PATH", QVN_TRANSPORT_DIRECTORY, 1);
  openKey("Settings");
  require(QvnInitialize(), "QvnInitialize");
  require(QvnGetClientId(&client_), "QvnGetClientId");
  require(QvnAddTransport("qvn_ipv4.so"), "QvnAddTransport");
}

Installation::~Installation() { QvnUninitialize(); }

void Installation::set(const std::string& name, std::uint32_t value) const {
  const std::string bytes(reinterpret_cast<const char*>(&value), sizeof value);
  require(registry::setValue(openKey("Settings"), name, registry::ValueType::Dword, bytes), "setValue");
}

void Installation::storePrinter(std::uint32_t handle, std::uint16_t printPort, std::uint16_t bidiPort) const {
  store(openKey("PrinterStore"), handle, printerText(handle, printPort, bidiPort));
}

void Installation::storeScanner(std::uint32_t handle, std::uint16_t scanPort) const {
  store(openKey("ScannerStore"), handle, deviceText("CpdScanner", handle, scanPort));
}

void Installation::storeHid(std::uint32_t handle, std::uint16_t hidPort) const {
  store(openKey("HidStore"), handle, deviceText("CpdHid", handle, hidPort));
}

void Installation::storeBpdScanner(std::uint32_t handle, std::uint16_t scanPort) const {
  store(openKey("ScannerStore"), handle, bpdScannerText(handle, scanPort));
}

std::string Installation::bpdScannerText(std::uint32_t handle, std::uint16_t scanPort) {
  return deviceText("BpdScanner", handle, scanPort);
}

void Installation::storePrinters(std::uint32_t first, std::uint32_t count, std::size_t textSize) const {
  const registry::Key printers = openKey("PrinterStore");
  require(registry::transaction([&] {
            for (std::uint32_t handle = first; handle < first + count; ++handle) {
              std::string text = printerText(handle, 9100, 9300);
              const std::size_t padding = std::max(textSize, text.size()) - text.size();
              AttributeCodec::setString(text, attribute::kNickname, std::string(padding, 'n'));
              store(printers, handle, text);
            }
            return platform::kSuccess;
          }),
          "transaction");
}

void Installation::removePrinters(std::uint32_t first, std::uint32_t count) const {
  const registry::Key printers = openKey("PrinterStore");
  require(registry::transaction([&] {
            for (std::uint32_t handle = first; handle < first + count; ++handle) {
              require(registry::deleteValue(printers, std::to_string(handle)), "deleteValue");
            }
            return platform::kSuccess;
          }),
          "transaction");
}

}  // namespace qvn::bench
