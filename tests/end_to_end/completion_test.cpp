// What bash offers for a command line that is not finished, on a machine with devices.
#include <gmock/gmock.h>

#include <sstream>

#include "end_to_end/print/print_server.h"

namespace qvn::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class Completion : public PrintServer {
 protected:
  // The words offered after these; the last is the one being written.
  static std::vector<std::string> offered(const std::vector<std::string>& words) {
    constexpr char kScript[] =
        "PATH=\"$2:$PATH\"; source \"$1\"; shift 2; COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); _qvn; "
        "((${#COMPREPLY[@]} == 0)) || printf '%s\\n' \"${COMPREPLY[@]}\"";
    const std::string tools = std::filesystem::path(QVN_COMMAND).parent_path().string();
    std::vector<std::string> command = {"/bin/bash", "-c", kScript, "bash", QVN_COMPLETION, tools, "qvn"};
    command.insert(command.end(), words.begin(), words.end());
    const Result result = run(command);
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    std::istringstream lines(result.output);
    std::vector<std::string> found;
    for (std::string line; std::getline(lines, line);) found.push_back(line);
    return found;
  }
};

TEST_F(Completion, OffersWhatFitsTheWordsBefore) {
  start();
  ok({"device", "add", "--family", "CpdPrinter", "--transport", "IPv4", "--handle", "7", "--portname",
      "front desk"});
  ok({"device", "add", "--family", "CpdHid", "--transport", "IPv4", "--handle", "8"});
  EXPECT_THAT(offered({"dev"}), ElementsAre("device"));
  EXPECT_THAT(offered({"device", "s"}), ElementsAre("show"));
  EXPECT_THAT(offered({"print", "--q"}), ElementsAre("--quiet"));
  EXPECT_THAT(offered({"print", "--device", ""}),
              UnorderedElementsAre("40001", "7", "IP_SIM0000001", "front\\ desk"));
  EXPECT_THAT(offered({"status", "--device", "fr"}), ElementsAre("front\\ desk"));
  EXPECT_THAT(offered({"device", "show", ""}),
              UnorderedElementsAre("40001", "40401", "40801", "7", "8", "IP_SIM0000001", "front\\ desk"));
  EXPECT_THAT(offered({"get", "Port"}),
              ElementsAre("Portname", "PortType", "PortId", "PortNumber", "PortNpaStatus"));
  EXPECT_THAT(offered({"set", "Printer"}), ElementsAre("Printer\\ Model"));
  EXPECT_THAT(offered({"device", "list", "--json", "--kind", "s"}), ElementsAre("scanner"));
  EXPECT_THAT(offered({"transport", "remove", ""}), ElementsAre("IPv4"));
  EXPECT_THAT(offered({"settings", "get", "TeojD"}), ElementsAre("TeojDuration"));
  EXPECT_THAT(offered({"print", "--job", ""}), IsEmpty());
  EXPECT_THAT(offered({"nonsense", "x"}), IsEmpty());
}

}  // namespace
}  // namespace qvn::test
