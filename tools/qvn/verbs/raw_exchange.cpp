#include "verbs/raw_exchange.h"

#include <iostream>
#include <nlohmann/json.hpp>

#include "shared/client/failure.h"
#include "shared/client/output.h"
#include "shared/client/text_values.h"

namespace qvn::cli {

std::string parseRequest(const std::vector<std::string>& hex, const std::string& example) {
  std::string text;
  for (const std::string& part : hex) {
    text += part + " ";
  }
  const auto request = parseHex(text);
  if (!request) {
    throw UsageError("bytes are written as pairs of hexadecimal digits, for example '" + example + "'");
  }
  return *request;
}

void printReply(const std::string& request, const std::string& reply, bool json) {
  if (json) {
    printJson({{"request", formatHex(request)}, {"reply", formatHex(reply)}});
  } else {
    std::cout << formatHex(reply, " ") << '\n';
  }
}

}  // namespace qvn::cli
