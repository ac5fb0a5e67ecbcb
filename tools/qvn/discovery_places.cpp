#include "discovery_places.h"

#include <arpa/inet.h>
#include <netdb.h>

#include <algorithm>
#include <cctype>
#include <optional>
#include <sstream>

#include "shared/client/text_values.h"

namespace qvn::cli {

namespace {

// What transports call the services that a network announces; no name of a host.
constexpr char kServicesWord[] = "dns-sd";

std::optional<std::uint32_t> parseAddress(const std::string& text) {
  in_addr address{};
  if (inet_pton(AF_INET, text.c_str(), &address) != 1) return std::nullopt;
  return ntohl(address.s_addr);
}

// The address of a host, or the word itself, which may be one of the transport's own.
std::string resolve(const std::string& word) {
  addrinfo hints{};
  hints.ai_family = AF_INET;
  addrinfo* found = nullptr;
  if (getaddrinfo(word.c_str(), nullptr, &hints, &found) != 0) return word;
  char text[INET_ADDRSTRLEN] = "";
  inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in*>(found->ai_addr)->sin_addr, text, sizeof text);
  freeaddrinfo(found);
  return text;
}

std::string trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t");
  return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// A range of addresses has no letter, and nothing but letters, digits, dots and dashes is in a host's name.
bool isName(const std::string& text) {
  const auto fits = [](unsigned char c) { return std::isalnum(c) != 0 || c == '.' || c == '-'; };
  return text != kServicesWord && std::all_of(text.begin(), text.end(), fits) &&
         std::any_of(text.begin(), text.end(), [](unsigned char c) { return std::isalpha(c) != 0; });
}

Place parsePlace(const std::string& item) {
  const std::size_t colon = item.find(':');
  const std::string port = colon == std::string::npos ? "" : item.substr(colon);
  std::string host = item.substr(0, colon);
  if (isName(host)) host = resolve(host);
  Place place{host + port, 0, 0, port.empty() ? 0 : parseNumber(port.substr(1)).value_or(0)};
  const std::size_t dash = host.find('-');
  const auto first = parseAddress(trimmed(host.substr(0, dash)));
  const auto last = dash == std::string::npos ? first : parseAddress(trimmed(host.substr(dash + 1)));
  if (first && last) {
    place.first = *first;
    place.last = *last;
  }
  return place;
}

}  // namespace

bool Place::contains(const std::string& address, std::uint32_t answersAt) const {
  const auto number = parseAddress(address);
  const bool samePort = port == 0 || answersAt == 0 || port == answersAt;
  return number && first <= *number && *number <= last && samePort;
}

std::vector<Place> parsePlaces(const std::vector<std::string>& arguments) {
  std::vector<Place> places;
  for (const std::string& argument : arguments) {
    std::istringstream items(argument);
    for (std::string item; std::getline(items, item, ',');) {
      if (!trimmed(item).empty()) places.push_back(parsePlace(trimmed(item)));
    }
  }
  return places;
}

}  // namespace qvn::cli
