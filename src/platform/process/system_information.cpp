#include "platform/process/system_information.h"

#include <limits.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

#include "platform/base/failure.h"

namespace qvn::platform {
namespace {

struct Message {
  std::uint32_t code;
  std::string_view text;
};

// In ascending order of the codes.
constexpr Message kMessages[] = {
    {0, "The operation completed successfully."},
    {1, "Incorrect function."},
    {2, "The system cannot find the file specified."},
    {3, "The system cannot find the path specified."},
    {4, "The system cannot open the file."},
    {5, "Access is denied."},
    {6, "The handle is invalid."},
    {8, "Not enough memory is available to process this command."},
    {13, "The data is invalid."},
    {22, "The device does not recognize the command."},
    {29, "The system cannot write to the specified device."},
    {31, "A device attached to the system is not functioning."},
    {52, "A duplicate name exists on the network."},
    {64, "The specified network name is no longer available."},
    {87, "The parameter is incorrect."},
    {112, "There is not enough space on the disk."},
    {122, "The data area passed to a system call is too small."},
    {126, "The specified module could not be found."},
    {127, "The specified procedure could not be found."},
    {170, "The requested resource is in use."},
    {183, "Cannot create a file when that file already exists."},
    {193, "The file is not a valid application."},
    {206, "The filename or extension is too long."},
    {234, "More data is available."},
    {258, "The wait operation timed out."},
    {259, "No more data is available."},
    {288, "Attempt to release mutex not owned by caller."},
    {317, "The system cannot find message text for the requested message number."},
    {1015,
     "The registry is corrupted. The structure of one of the files containing registry data is damaged."},
    {1016, "An I/O operation initiated by the registry failed unrecoverably."},
    {1018, "Illegal operation attempted on a registry key that has been marked for deletion."},
    {1020, "Cannot delete a registry key that has subkeys."},
    {1117, "The request could not be performed because of an I/O device error."},
    {1167, "The device is not connected."},
    {1168, "Element not found."},
    {1223, "The operation was canceled by the user."},
    {1225, "The remote computer refused the network connection."},
    {1229, "An operation was attempted on a nonexistent network connection."},
    {1231, "The network location cannot be reached."},
    {1232, "The network location cannot be reached."},
    {1236, "The network connection was aborted by the local system."},
    {1306, "Indicates two revision levels are incompatible."},
    {1359, "An internal error occurred."},
    {1460, "This operation returned because the timeout period expired."},
    {1629, "Data supplied is of wrong type."},
    {1722, "The RPC server is unavailable."},
    {1796, "The specified port is unknown."},
    {3006, "The specified print monitor has already been installed."},
};

constexpr bool byCode(const Message& left, const Message& right) { return left.code < right.code; }
static_assert(std::is_sorted(std::begin(kMessages), std::end(kMessages), byCode));

constexpr OsVersionInfo kVersion{
    .platformId = 2, .majorVersion = 10, .minorVersion = 0, .buildNumber = 19045};
constexpr std::uint32_t kWesternCodePage = 1252;

}  // namespace

ErrorCode osVersion(OsVersionInfo& version) {
  version = kVersion;
  return kSuccess;
}

ErrorCode messageText(std::uint32_t code, std::string& text) {
  const auto* const message =
      std::lower_bound(std::begin(kMessages), std::end(kMessages), Message{code, {}}, byCode);
  if (message == std::end(kMessages) || message->code != code) return fail(kMessageNotFound);
  text.assign(message->text);
  text += "\r\n";
  return kSuccess;
}

ErrorCode computerName(std::string& name) {
  std::array<char, HOST_NAME_MAX + 1> buffer{};
  if (gethostname(buffer.data(), buffer.size() - 1) != 0) return failWithErrno();
  name = buffer.data();
  return kSuccess;
}

std::uint32_t ansiCodePage() { return kWesternCodePage; }

}  // namespace qvn::platform
