#include "device_uri.h"

#include <cups/cups.h>

#include <charconv>
#include <string_view>

#include "shared/client/failure.h"

namespace qvn::cups {

namespace {

constexpr std::uint32_t kDefaultPatienceSeconds = 300;
constexpr std::uint32_t kLongestPatienceSeconds = 7 * 24 * 3600;

// What needs no encoding in any place of a URI.
constexpr std::string_view kUnreserved = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";

platform::Milliseconds patienceOf(const std::string& uri, const std::string& resource) {
  const std::size_t question = resource.find('?');
  if (question == std::string::npos) return kDefaultPatienceSeconds * 1000;
  const std::string_view options = std::string_view(resource).substr(question + 1);
  constexpr std::string_view kName = "contimeout=";
  std::uint32_t seconds = 0;
  const char* const end = options.data() + options.size();
  if (!options.starts_with(kName)) {
    throw cli::UsageError("the device URI '" + uri + "' has an option other than contimeout");
  }
  const auto [stop, error] = std::from_chars(options.data() + kName.size(), end, seconds);
  if (error != std::errc() || stop != end || seconds > kLongestPatienceSeconds) {
    throw cli::UsageError("contimeout in the device URI '" + uri + "' is no number of seconds up to " +
                          std::to_string(kLongestPatienceSeconds));
  }
  return seconds * 1000;
}

}  // namespace

std::string formatDeviceUri(const std::string& portName) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string uri = "qvn://";
  for (const char byte : portName) {
    if (kUnreserved.find(byte) != std::string_view::npos) {
      uri += byte;
    } else {
      const auto value = static_cast<unsigned char>(byte);
      uri += {'%', kDigits[value >> 4], kDigits[value & 0xF]};
    }
  }
  return uri;
}

DeviceUri parseDeviceUri(const std::string& uri) {
  char scheme[HTTP_MAX_URI];
  char user[HTTP_MAX_URI];
  char host[HTTP_MAX_URI];
  char resource[HTTP_MAX_URI];
  int port = 0;
  const http_uri_status_t status =
      httpSeparateURI(HTTP_URI_CODING_ALL, uri.c_str(), scheme, sizeof scheme, user, sizeof user, host,
                      sizeof host, &port, resource, sizeof resource);
  // An unknown scheme is only a warning; what is too long for a place is cut.
  if (uri.size() >= HTTP_MAX_URI || status < HTTP_URI_STATUS_OK || std::string_view(scheme) != "qvn" ||
      host[0] == '\0' || user[0] != '\0' ||
      !(std::string_view(resource) == "/" || std::string_view(resource).starts_with("/?") ||
        std::string_view(resource).starts_with("?"))) {
    throw cli::UsageError("'" + uri + "' is no device URI of the form qvn://PORTNAME");
  }
  return {host, patienceOf(uri, resource)};
}

}  // namespace qvn::cups
