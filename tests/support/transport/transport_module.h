// The transport as the library sees it: loaded as a module, used through its managers.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "platform/process/module.h"
#include "qvn/transport/connection_manager.h"
#include "qvn/transport/device.h"
#include "qvn/transport/discoverer.h"
#include "qvn/transport/visitor_manager.h"
#include "support/simulator/test_sockets.h"

namespace qvn::test {

// Makes the library's key in the registry, so that settings are kept. Those that a test waits for it makes
// short.
void installSettings();
void setSetting(const char* name, std::uint32_t value);

class TransportModule {
 public:
  // The transport that the suite is about, or the module at that path.
  TransportModule();
  explicit TransportModule(const char* path);
  // Uninitialises and unloads.
  ~TransportModule();

  void* entryPoint(const char* name) const;
  ConnectionManager& connections;
  VisitorManager& visitors;
  Discoverer& discoverer;

 private:
  explicit TransportModule(std::unique_ptr<platform::Module> module);
  std::unique_ptr<platform::Module> module_;
};

std::string attributeText(std::uint16_t printPort, std::uint16_t bidiPort,
                          const std::string& address = "127.0.0.1", std::uint32_t handle = 7);
// Of a scanner or a HID, whose one port that is.
std::string partText(const char* family, std::uint16_t channel);

// A device with one connection of the module, as the library holds one; what comes is delivered to `child`.
class OpenConnection {
 public:
  OpenConnection(TransportModule& module, const std::string& attributes, const char* name,
                 Device* child = nullptr);
  ~OpenConnection();
  Connectable* operator->() const { return connection_; }
  Connectable& operator*() const { return *connection_; }

  std::uint32_t openCode() const { return openCode_; }

 private:
  TransportModule& module_;
  Connectable* const connection_;
  std::uint32_t openCode_ = 0;
};

struct ExchangeResult {
  std::uint32_t result;     // of the visitor
  std::uint32_t replyCode;  // of the request
  friend bool operator==(const ExchangeResult&, const ExchangeResult&) = default;
};
void PrintTo(const ExchangeResult& result, std::ostream* out);

// Runs a visitor with that data and device, if any; its result.
std::uint32_t visit(TransportModule& module, Connectable& connection, const std::string& visitorName,
                    Data* data = nullptr, Device* device = nullptr);
ExchangeResult exchange(TransportModule& module, Connectable& connection, Device& device,
                        std::string_view request, const char* visitorName = visitor_name::kNpaData);

}  // namespace qvn::test
