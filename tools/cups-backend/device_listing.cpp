#include "device_listing.h"

#include <cups/backend.h>

#include <string>

#include "device_uri.h"
#include "qvn/qvn.h"
#include "qvn/transport/attributes.h"
#include "shared/client/devices.h"

namespace qvn::cups {

namespace {

// What the scheduler calls the kinds of transport.
constexpr struct {
  const char* transports;
  const char* deviceClass;
} kClasses[] = {{"LOCAL_TRANSPORT", "direct"}, {"NETWORK_TRANSPORT", "network"}};

}  // namespace

void listDevices(const cli::Session& session) {
  // What is stored can be listed without it.
  QvnDiscovery(session.client(), "ALL_TRANSPORT", nullptr);
  for (const auto& [transports, deviceClass] : kClasses) {
    for (const cli::Device& printer : cli::listDevices(session, cli::kindNamed("printer"), transports)) {
      const std::string portName = cli::readText(session, printer, attribute::kPortname);
      if (portName.empty()) continue;  // nothing a URI could name it by
      std::string model = cli::readText(session, printer, attribute::kPrinterModel);
      if (model.empty()) model = "Unknown";
      std::string info = cli::readText(session, printer, attribute::kNickname);
      if (info.empty()) {
        info = portName;
      } else {
        info.append(" (").append(portName).append(")");
      }
      const std::string address = cli::readText(session, printer, attribute::kAddress);
      cupsBackendReport(deviceClass, formatDeviceUri(portName).c_str(), model.c_str(), info.c_str(), nullptr,
                        address.c_str());
    }
  }
}

}  // namespace qvn::cups
