// What the commands that send raw bytes and print the reply (npa, esc) have in common.
#pragma once

#include <string>
#include <vector>

namespace qvn::cli {

struct RawExchangeOptions {
  std::vector<std::string> hex;
  std::string device;
  bool json = false;
};

// The bytes that the arguments stand for together. Throws UsageError, with the example, when they are none.
std::string parseRequest(const std::vector<std::string>& hex, const std::string& example);

void printReply(const std::string& request, const std::string& reply, bool json);

}  // namespace qvn::cli
