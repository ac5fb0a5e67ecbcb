#include "shared/scan/scanner_families.h"

#include <algorithm>
#include <array>
#include <string>

#include "qvn/qvn.h"
#include "qvn/transport/attributes.h"
#include "shared/scan/connection.h"
#include "shared/scan/error.h"
#include "shared/scan/esc_scanner.h"
#include "shared/scan/host_send_scanner.h"

namespace qvn::scan {

namespace {

template <typename Family>
std::unique_ptr<Scanner> open(std::uint32_t handle, std::chrono::milliseconds patience) {
  return std::make_unique<Family>(handle, patience);
}

struct Family {
  std::string_view name;
  std::unique_ptr<Scanner> (*open)(std::uint32_t handle, std::chrono::milliseconds patience);
};
constexpr std::array kFamilies = {
    Family{"CpdScanner", open<EscScanner>},
    Family{"BpdScanner", open<HostSendScanner>},
};

const Family* findFamily(std::string_view name) {
  const auto* const found = std::find_if(kFamilies.begin(), kFamilies.end(),
                                         [&](const Family& family) { return family.name == name; });
  return found == kFamilies.end() ? nullptr : found;
}

// No family's name is longer than the buffer.
std::string familyOf(std::uint32_t handle) {
  std::uint32_t client = 0;
  QvnGetClientId(&client);
  char name[64] = "";
  std::uint32_t required = 0;
  requireSuccess(QvnGetStringScanner(client, handle, attribute::kDevice, name, sizeof name, &required),
                 "cannot read the scanner's family");
  return name;
}

}  // namespace

bool isKnownFamily(std::string_view family) { return findFamily(family) != nullptr; }

std::unique_ptr<Scanner> openScanner(std::uint32_t handle, std::chrono::milliseconds patience) {
  const std::string name = familyOf(handle);
  const Family* const family = findFamily(name);
  if (family == nullptr) throw Error(Problem::Failed, "a " + name + " cannot be scanned with here");
  return family->open(handle, patience);
}

}  // namespace qvn::scan
