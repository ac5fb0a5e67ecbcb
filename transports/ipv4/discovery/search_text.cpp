#include "discovery/search_text.h"

#include <algorithm>
#include <charconv>
#include <set>
#include <string>

#include "qvn/result_codes.h"

namespace qvn::ipv4 {
namespace {

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

bool parsePort(std::string_view text, std::uint16_t& port) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
  return error == std::errc() && end == text.data() + text.size() && port != 0;
}

bool addItem(std::string_view item, std::set<Endpoint>& places) {
  std::uint16_t port = kDefaultDiscoveryPort;
  if (const std::size_t colon = item.find(':'); colon != std::string_view::npos) {
    if (!parsePort(item.substr(colon + 1), port)) return false;
    item = item.substr(0, colon);
  }
  const std::size_t dash = item.find('-');
  const std::string_view last = dash == std::string_view::npos ? item : trimmed(item.substr(dash + 1));
  std::uint32_t firstAddress = 0;
  std::uint32_t lastAddress = 0;
  if (!parseAddress(std::string(trimmed(item.substr(0, dash))), firstAddress) ||
      !parseAddress(std::string(last), lastAddress) || lastAddress < firstAddress ||
      lastAddress - firstAddress >= kMaxSearchPlaces) {
    return false;
  }
  for (std::uint64_t address = firstAddress; address <= lastAddress; ++address) {
    places.insert({static_cast<std::uint32_t>(address), port});
  }
  return places.size() <= kMaxSearchPlaces;
}

}  // namespace

std::uint32_t parseSearchText(std::string_view text, SearchText& search) {
  std::set<Endpoint> found;
  bool services = false;
  while (!text.empty()) {
    const std::size_t comma = text.find(',');
    const std::string_view item = trimmed(text.substr(0, comma));
    if (item == kServicesWord) {
      services = true;
    } else if (!item.empty() && !addItem(item, found)) {
      return QRN_ERROR_INVALID_PARAMETER;
    }
    text = comma == std::string_view::npos ? std::string_view() : text.substr(comma + 1);
  }
  search.places.assign(found.begin(), found.end());
  search.services = services;
  return QRN_ERROR_SUCCESS;
}

}  // namespace qvn::ipv4
