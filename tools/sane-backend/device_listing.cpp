#include "device_listing.h"

#include "qvn/transport/attributes.h"
#include "shared/client/devices.h"
#include "shared/scan/scanner_families.h"

namespace qvn::sane {

namespace {

// Of the words that SANE has for them: the registry does not tell vendors, and a scanner with a flatbed is in
// most cases part of a device that prints.
constexpr char kVendor[] = "Noname";
constexpr char kType[] = "multi-function peripheral";

}  // namespace

DeviceListing::DeviceListing(const cli::Session& session, bool localOnly) {
  const char* const transports = localOnly ? "LOCAL_TRANSPORT" : "ALL_TRANSPORT";
  for (const cli::Device& scanner : cli::listDevices(session, cli::kindNamed("scanner"), transports)) {
    if (!scan::isKnownFamily(cli::readText(session, scanner, attribute::kDevice))) continue;
    auto entry = std::make_unique<Entry>();
    entry->handle = scanner.handle;
    entry->name = cli::readText(session, scanner, attribute::kPortname);
    if (entry->name.empty()) entry->name = std::to_string(scanner.handle);
    entry->model = cli::readText(session, scanner, attribute::kPrinterModel);
    if (entry->model.empty()) entry->model = "scanner";
    entry->device = {entry->name.c_str(), kVendor, entry->model.c_str(), kType};
    devices_.push_back(&entry->device);
    entries_.push_back(std::move(entry));
  }
  devices_.push_back(nullptr);
}

std::optional<std::uint32_t> DeviceListing::find(const std::string& name) const {
  for (const auto& entry : entries_) {
    if (name.empty() || name == entry->name || name == std::to_string(entry->handle)) return entry->handle;
  }
  return std::nullopt;
}

}  // namespace qvn::sane
