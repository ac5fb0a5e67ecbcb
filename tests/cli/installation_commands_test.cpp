// The verbs that set the library up, and the registry scripts behind them.
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "platform/files/paths.h"
#include "support/process/successful_run.h"

namespace qvn::test {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

std::filesystem::path scriptFile() {
  std::string directory;
  EXPECT_EQ(platform::systemDirectory(directory), 0u);
  return platform::nativePath(directory + "\\qr__.loc");
}

class InstallationCommands : public testing::Test {
 protected:
  InstallationCommands() {
    ok({"registry", "import", "-"}, "[-Software]\n[-System]\n");
    std::filesystem::remove_all(scriptFile());
  }
};

TEST_F(InstallationCommands, InstallGivesEverySettingItsDefaultAndUninstallTakesAllAway) {
  ok({"settings", "set", "TeojDuration", "1500"});
  EXPECT_EQ(ok({"install"}), "the library is set up; transports: IPv4\n");
  EXPECT_EQ(json::parse(ok({"transport", "list", "--json"})),
            json::parse(R"([{"name": "IPv4", "kind": "NETWORK_TRANSPORT", "module": "qvn_ipv4.so"}])"));
  for (const json& setting : json::parse(ok({"settings", "list", "--json"}))) {
    if (setting["name"] == "TeojDuration") {
      EXPECT_EQ(setting["value"], 1500);
    } else if (setting["name"] != "DefaultModelName") {
      EXPECT_EQ(setting["value"], setting["default"]) << setting;
    }
  }
  const std::string once = ok({"registry", "export"});
  ok({"install"});
  EXPECT_EQ(ok({"registry", "export"}), once);
  ok({"settings", "set", "DeleteStoreOnUninstall", "1"});
  EXPECT_THAT(ok({"uninstall", "-q"}), testing::IsEmpty());
  EXPECT_EQ(qvn({"registry", "export", "--key", "Software\\Quorin Tools"}).exitCode, 1);
}

TEST_F(InstallationCommands, InstallSaysWhatIsWrongWithTheScript) {
  const auto expectFailure = [](const testing::Matcher<std::string>& words) {
    const Result result = qvn({"install"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.errors, words);
    std::filesystem::remove(scriptFile());
  };
  std::ofstream(scriptFile()) << "[Software\\Quorin Tools]\n\"a\"=b\n";
  expectFailure(AllOf(HasSubstr("qr__.loc: line 2: a text in double"), HasSubstr("nothing was installed")));
  std::filesystem::create_directory(scriptFile());
  expectFailure(HasSubstr("cannot read the registry script"));
  std::ofstream(scriptFile()) << "# of no use\n";
  expectFailure(HasSubstr("the registry script was not imported"));
  EXPECT_EQ(qvn({"registry", "export"}).exitCode, 1);
}

TEST_F(InstallationCommands, ATransportThatDoesNotWorkIsToldWithTheReason) {
  namespace fs = std::filesystem;
  ok({"install"});
  const auto expectFailure = [](const std::vector<std::string>& arguments,
                                const testing::Matcher<std::string>& words) {
    const Result result = qvn(arguments);
    EXPECT_EQ(result.exitCode, 1) << testing::PrintToString(arguments);
    EXPECT_THAT(result.errors, words) << testing::PrintToString(arguments);
  };
  const std::string modules = QVN_BROKEN_MODULES "qvn_broken_";
  expectFailure({"transport", "add", modules + "undefined.so"},
                AllOf(StartsWith("qvn: cannot load the module '"), HasSubstr("undefined symbol: isNowhere"),
                      HasSubstr("(result 193")));
  expectFailure({"transport", "add", modules + "fails_to_initialize.so"}, HasSubstr("cannot be added"));
  expectFailure({"transport", "add", modules + "fails_to_install.so"},
                AllOf(HasSubstr("is registered, but not installed"), HasSubstr("(result 31)")));
  EXPECT_THAT(ok({"transport", "list"}), HasSubstr("BROKEN"));
  expectFailure({"install"},
                AllOf(HasSubstr("a transport is registered, but not installed"), HasSubstr("(result 31)")));

  const fs::path directory = fs::path(std::getenv("QVN_HOME")) / "modules";
  fs::create_directory(directory);
  const std::string copied = directory / "no_abi.so";
  fs::copy_file(modules + "no_abi.so", copied);
  ok({"transport", "remove", "BROKEN"});
  qvn({"transport", "add", copied});
  ok({"install"});
  fs::permissions(directory, fs::perms::all);
  const std::vector<std::string> commands[] = {{"transport", "add", copied},
                                               {"install"},
                                               {"discover", "--transport", "BROKEN"},
                                               {"discover", "--transport", "LOCAL_TRANSPORT"}};
  for (const auto& arguments : commands) {
    expectFailure(arguments,
                  AllOf(HasSubstr(copied), HasSubstr(directory.string() +
                                                     " can be written by others than its owner (result 5")));
  }
  ok({"discover", "--transport", "NETWORK_TRANSPORT", "--json"});  // which does not ask for it
  expectFailure({"install"}, HasSubstr("BROKEN: its module " + copied + " can be changed by others: "));
  fs::remove(copied);
  expectFailure({"install"}, HasSubstr("BROKEN: its module " + copied + " was not found (result 126"));
}

TEST_F(InstallationCommands, ATransportIsKeptByItsPathAndGoesWithoutAnError) {
  namespace fs = std::filesystem;
  const fs::path transports = std::getenv("QVN_TRANSPORT_PATH");
  const Result none = qvn({"transport", "list"});
  EXPECT_THAT(none.errors, HasSubstr("no transport is registered"));
  const std::string given = fs::relative(transports / "qvn_ipv4.so").string();
  EXPECT_THAT(ok({"transport", "add", "./" + given}), HasSubstr("added the transport IPv4, /"));
  const std::string kept = (fs::canonical(transports) / "qvn_ipv4.so").string();
  EXPECT_THAT(ok({"transport", "list"}), HasSubstr(kept));

  const fs::path log = platform::nativePath("c:\\qr__.log");
  for (const std::string& name : {std::string("IPv4"), kept, "./" + given}) {
    ok({"transport", "add", kept, "--quiet"});
    fs::remove(log);
    EXPECT_EQ(ok({"transport", "remove", name}), "removed the transport IPv4, " + kept + "\n");
    EXPECT_FALSE(fs::exists(log)) << name;
  }
}

TEST_F(InstallationCommands, TheMonitorIsRegisteredOnce) {
  const Result result = qvn({"monitor", "add"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.errors,
              AllOf(HasSubstr("has no name"), HasSubstr("(result 1168, QRN_ERROR_NOT_FOUND)")));
  ok({"install"});
  EXPECT_EQ(ok({"monitor", "add"}), "registered the print monitor\n");
  EXPECT_EQ(ok({"monitor", "add"}), "the print monitor is registered already\n");
}

TEST_F(InstallationCommands, HostInformationHasDefaultsAndCanBeOfAnyLength) {
  ok({"install"});
  const json listed = json::parse(ok({"host", "get", "--json"}));
  ASSERT_EQ(listed.size(), 3u);
  EXPECT_EQ(listed[0]["name"], "PcName");
  EXPECT_EQ(listed[1], json({{"name", "PinNumber"}, {"value", "0000"}}));
  EXPECT_EQ(listed[2], json({{"name", "CodePage"}, {"value", "1252"}}));
  EXPECT_EQ(ok({"host", "get", "PcName"}), listed[0]["value"].get<std::string>() + "\n");
  EXPECT_THAT(ok({"host", "get"}), HasSubstr("PinNumber  0000"));

  for (const std::string& value :
       {std::string(100'000, 'x'), std::string(), std::string("b\xC3\xBCro <1>")}) {
    ok({"host", "set", "PcName", value});
    EXPECT_EQ(ok({"host", "get", "PcName"}), value + "\n");
  }
  EXPECT_EQ(ok({"host", "get", "PinNumber"}), "0000\n");

  const std::vector<std::string> refused[] = {
      {"host"}, {"host", "get", "Vid"}, {"host", "set", "PcName"}, {"host", "set", "PcName", "a</PcName>"}};
  for (const auto& arguments : refused) {
    const Result result = qvn(arguments);
    EXPECT_EQ(result.exitCode, 2) << testing::PrintToString(arguments);
    EXPECT_THAT(result.errors, StartsWith("qvn: "));
  }
}

TEST_F(InstallationCommands, AScriptWithoutEndIsRefused) {
  const Result result =
      run({"/bin/sh", "-c",
           "{ echo; head -c 1G /dev/zero | tr '\\0' ' '; } | " QVN_COMMAND " registry import -"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.errors,
              AllOf(HasSubstr("line 2: a script has at most 64 MiB"), HasSubstr("nothing was imported")));
}

}  // namespace
}  // namespace qvn::test
