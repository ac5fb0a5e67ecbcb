// The command line as a process, as far as no device is needed.
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
using testing::Not;

void addPrinter(const std::string& handle, const std::string& portname) {
  ok({"device", "add", "--family", "CpdPrinter", "--transport", "IPv4", "--handle", handle, "--address",
      "127.0.0.1", "--portname", portname, "--set", "Vid=0x43d", "--set", "NpaRevisionLevel=01 02 03"});
}

class CommandLine : public testing::Test {
 protected:
  void SetUp() override {
    ok({"registry", "import", "-"}, "[-Software]");
    std::filesystem::remove(platform::nativePath("c:\\qr__.log"));
  }
};

std::vector<std::string> addHid(const std::string& attribute) {
  return {"device", "add", "--family", "CpdHid", "--transport", "T", "--handle", "1", "--set", attribute};
}

TEST_F(CommandLine, RefusesWhatItDoesNotUnderstandWithOneSentence) {
  const struct {
    std::vector<std::string> arguments;
    int exitCode;
    std::string sentence;
  } cases[] = {
      {{}, 2, "A subcommand is required"},
      {{"transport"}, 2, "A subcommand is required"},
      {{"device", "show"}, 2, "DEVICE is required"},
      {{"device", "show", "7", "--kind", "fax"}, 2, "fax"},
      {{"device", "show", "7"}, 1, "there is no device 7: the handle is invalid (result 6, "},
      {{"device", "list", "--kind", "hid", "--portname", "x"}, 2, "only printers are listed by"},
      {{"device", "remove", "7", "--kind", "scanner"}, 1, "there is no scanner 7"},
      {{"device", "add", "--family", "Fax", "--transport", "T", "--handle", "1"}, 2, "Fax"},
      {{"device", "add", "--family", "CpdHid", "--transport", "T", "--handle", "0"}, 2, "from 1 up"},
      {addHid("Vid=x"), 2, "Vid is a number"},
      {addHid("Nickname=</Nickname>"), 2, "cannot contain"},
      {{"device", "list", "--portname", "</Portname>"}, 2, "cannot contain"},
      {{"transport", "add", "/./none.so"}, 1, "cannot load the module '/none.so': /none.so: No such file"},
      {{"transport", "remove", "IPv4"}, 1, "(result 1168, QRN_ERROR_NOT_FOUND)"},
      {{"print", "x.prn"}, 1, "no printer of a registered transport is stored"},
      {{"print", "--copies", "0", "x.prn"}, 2, "--copies"},
      {{"print", "--copies", "2", "-"}, 2, "standard input can be read once"},
      {{"print", "x.prn", "--device", "LAB1"}, 1, "(result 1796, QRN_ERROR_UNKNOWN_PORT)"},
      {{"pritn", "x.prn"}, 2, "no verb 'pritn'; did you mean 'print'?"},
      {{"log", "folow"}, 2, "'qvn log' has no verb 'folow'; did you mean 'follow'?"},
      {{"print", "--devcie=7"}, 2, "'qvn print' has no option '--devcie'; did you mean '--device'?"},
      {{"npa", "A5", "0"}, 2, "pairs of hexadecimal digits"},
      {{"esc", "1B53560000000000"}, 1, "no scanner of a registered transport is stored"},
      {{"hid", "watch", "--device", "7"}, 1, "there is no hid 7"},
      {{"scan"}, 2, "--output is required"},
      {{"scan", "-o", "page.png"}, 1, "no scanner of a registered transport is stored"},
      {{"scan", "-o", "page.jpg"}, 2, "ends in .png, .tif or .tiff"},
      {{"scan", "-o", "page.png", "--mode", "sepia"}, 2, "sepia"},
      {{"scan", "-o", "page.png", "--area", "1x2x3"}, 2, "an area is left, top, width and height"},
      {{"scan", "-o", "page.png", "--pages", "0"}, 2, "a number from 1 up, or all"},
      {{"scan", "-o", "page.png", "--pages", "2"}, 2, "several come from --source feeder"},
      {{"scan", "-o", "-", "--pages", "all", "--source", "feeder"}, 2, "standard output takes one page"},
      {{"scan", "-o", "-", "--json"}, 2, "not both"},
      {{"get", "Colour"}, 2, "no attribute 'Colour'; 'qvn get --help' lists them"},
      {{"get", "Portnam"}, 2, "did you mean 'Portname'?"},
      {{"discover"}, 1, "no transport is registered: run 'qvn install'"},
      {{"set", "Vid", "x", "--device", "7"}, 1, "there is no printer 7"},
      {{"settings", "get", "Colour"}, 2, "no setting 'Colour'; 'qvn settings list'"},
      {{"settings", "get", "TeojDurration"}, 2, "did you mean 'TeojDuration'?"},
      {{"settings", "get", "CpdPrinterHostId"}, 1, "has no value"},
      {{"settings", "set", "TeojDuration", "1.5"}, 2, "is a number"},
      {{"settings", "set", "CpdPrinterHostId", "0"}, 2, "bytes in hexadecimal"},
      {{"settings", "set", "CpdPrinterHostId", "0102"}, 2, "is 6 bytes, not 2"},
      {{"settings", "set", "MwoBufferHwm", "5"}, 2, "would ignore marks of 5 (MwoBufferHwm) and 5"},
      {{"settings", "set", "MwoBufferLwm", "10"}, 2, "would ignore marks of 10 (MwoBufferHwm) and 10"},
      {{"settings", "set", "Usb1BpdScanTimeoutMultiplier", "0"}, 2, "of 0 for 1"},
      {{"log", "show", "--since", "soon"}, 2, "'soon' is no time"},
      {{"registry", "import", "/no/such/file"}, 1, "cannot read '/no/such/file'"},
      {{"registry", "export", "--key", "Software\\None"}, 1, "cannot read the key"},
      {{"log", "show"}, 1, "nothing has been logged yet"},
  };
  for (const auto& [arguments, exitCode, sentence] : cases) {
    const Result result = qvn(arguments);
    SCOPED_TRACE(testing::PrintToString(arguments));
    EXPECT_EQ(result.exitCode, exitCode) << result.errors;
    EXPECT_THAT(result.errors, AllOf(testing::StartsWith("qvn: "), HasSubstr(sentence)));
    EXPECT_THAT(result.output, testing::IsEmpty());
  }
}

TEST_F(CommandLine, Helps) {
  EXPECT_THAT(ok({"--help"}), AllOf(HasSubstr("Exit codes:"), HasSubstr("130")));
  EXPECT_THAT(ok({"get", "--help"}), AllOf(HasSubstr("Usage: qvn get"), HasSubstr("Examples:\n  qvn ")));
  EXPECT_THAT(ok({"--version"}), testing::MatchesRegex("qvn [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST_F(CommandLine, FailsWhenItsOutputCannotBeWritten) {
  const Result result = run({"/bin/sh", "-c", std::string(QVN_COMMAND) + " settings list >/dev/full"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.errors, HasSubstr("cannot write to standard output"));
}

TEST_F(CommandLine, StoresShowsAndForgetsDevices) {
  addPrinter("7", "LAB1");
  addPrinter("12", "LAB2");
  ok({"device", "add", "--family", "BpdScanner", "--transport", "IPv4", "--handle", "7"});

  const json listed = json::parse(ok({"device", "list", "--transport", "IPv4", "--json"}));
  ASSERT_EQ(listed.size(), 3u);
  EXPECT_EQ(listed[0], json({{"kind", "printer"},
                             {"handle", 7},
                             {"family", "CpdPrinter"},
                             {"transport", "IPv4"},
                             {"portname", "LAB1"},
                             {"address", "127.0.0.1"}}));
  EXPECT_EQ(listed[2]["kind"], "scanner");
  EXPECT_EQ(listed[2]["portname"], nullptr);
  EXPECT_THAT(ok({"device", "list", "--transport", "IPv4", "--kind", "printer"}),
              AllOf(HasSubstr("LAB1"), HasSubstr("LAB2"), Not(HasSubstr("scanner"))));
  const struct {
    std::vector<std::string> filter;
    std::size_t found;
  } filters[] = {{{"--portname", "lab2"}, 1},
                 {{"--address", "127.0.0.1"}, 2},
                 {{"--address", "127.0.0.1", "--portname", "LAB1"}, 1},
                 {{"--port-type", "TCP"}, 0}};
  for (const auto& [filter, found] : filters) {
    std::vector<std::string> arguments = {"device", "list", "--transport", "IPv4", "--json"};
    arguments.insert(arguments.end(), filter.begin(), filter.end());
    EXPECT_EQ(json::parse(ok(arguments)).size(), found) << testing::PrintToString(filter);
  }
  // Only devices of registered transports are of every transport.
  EXPECT_EQ(json::parse(ok({"device", "list", "--json"})), json::array());

  EXPECT_EQ(qvn({"device", "show", "7"}).exitCode, 2) << "two kinds have the handle";
  const json shown = json::parse(ok({"device", "show", "7", "--kind", "printer", "--json"}));
  EXPECT_EQ(shown["attributes"], json({{"Device", "CpdPrinter"},
                                       {"Handle", 7},
                                       {"Portname", "LAB1"},
                                       {"Address", "127.0.0.1"},
                                       {"Transport", "IPv4"},
                                       {"Vid", 0x43D},
                                       {"NpaRevisionLevel", "010203"}}));
  EXPECT_EQ(ok({"get", "Vid", "--device", "lab2"}), "1085\n") << "port names compare without case";
  EXPECT_EQ(ok({"get", "Device", "--device", "7", "--kind", "scanner"}), "BpdScanner\n");
  EXPECT_EQ(qvn({"get", "Nickname", "--device", "7", "--kind", "printer"}).exitCode, 1);
  EXPECT_EQ(ok({"get", "Handle", "--device", "12"}), "12\n") << "one kind alone has it";

  EXPECT_EQ(ok({"device", "remove", "Lab2"}), "removed printer 12 (LAB2)\n");
  EXPECT_EQ(json::parse(ok({"device", "list", "--transport", "IPv4", "--json"})).size(), 2u);
}

TEST_F(CommandLine, RefusesASecondDeviceOfAHandleOrAPortName) {
  addPrinter("7", "LAB1");
  for (const char* handle : {"7", "8"}) {
    const Result result = qvn({"device", "add", "--family", "CpdPrinter", "--transport", "IPv4", "--handle",
                               handle, "--portname", handle == std::string("7") ? "OTHER" : "LAB1"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.errors, HasSubstr("result 52, QRN_ERROR_DUP_NAME"));
  }
  EXPECT_EQ(json::parse(ok({"device", "list", "--transport", "IPv4", "--json"})).size(), 1u);
}

TEST_F(CommandLine, ReadsAndChangesSettings) {
  const json before = json::parse(ok({"settings", "list", "--json"}));
  for (const json& setting : before) {
    EXPECT_EQ(setting["value"], setting["default"]) << setting;
    EXPECT_FALSE(setting["meaning"].get<std::string>().empty());
  }
  const struct {
    const char* name;
    const char* given;
    const char* shown;
  } cases[] = {
      {"TeojDuration", "1500", "1500"},
      {"MwoBufferHwm", "0x20", "32"},
      {"All", "11", "0x0000000B"},
      {"CpdPrinterHostId", "01:02:03:04:05:ab", "0102030405AB"},
      {"DefaultModelName", "Model_One", "Model_One"},
      {"Par1\\Settings\\ReadTimeout", "4294967295", "4294967295"},
  };
  for (const auto& [name, given, shown] : cases) {
    ok({"settings", "set", name, given});
    EXPECT_EQ(ok({"settings", "get", name}), std::string(shown) + "\n");
  }
  EXPECT_EQ(ok({"settings", "get", "Settings\\TeojDuration"}), "1500\n") << "named with its key";
  EXPECT_EQ(ok({"settings", "unset", "TeojDuration"}),
            "TeojDuration has no value of its own any more; its default is 60000\n");
  EXPECT_EQ(ok({"settings", "get", "TeojDuration"}), "60000\n");
  EXPECT_EQ(ok({"settings", "set", "TeojDuration", "1500"}), "set TeojDuration to 1500\n");
  EXPECT_EQ(ok({"settings", "set", "TeojDuration", "1500", "--quiet"}), "");
  EXPECT_THAT(qvn({"settings", "set", "Settings\\TeojDurration", "1"}).errors, HasSubstr("nothing reads"));
  EXPECT_EQ(ok({"settings", "get", "TeojInterval"}), "1000\n") << "a default is not written by reading it";
  EXPECT_THAT(ok({"registry", "export"}),
              AllOf(HasSubstr("\"TeojDuration\"=dword:000005dc"), Not(HasSubstr("TeojInterval"))));
}

TEST_F(CommandLine, TurnsTheLogOnAndOff) {
  const std::filesystem::path file = platform::nativePath("c:\\qr__.log");
  EXPECT_EQ(ok({"log", "path"}), file.string() + "\n");
  EXPECT_THAT(ok({"log"}), AllOf(HasSubstr("off: "), HasSubstr(file.string())));
  ok({"log", "on"});
  EXPECT_EQ(ok({"settings", "get", "startLog"}), "1\n");
  EXPECT_THAT(ok({"log", "status"}), HasSubstr("on: levels 0xFFFFFFFF"));
  ok({"device", "list", "--json"});
  const std::string log = ok({"log", "show"});
  EXPECT_THAT(log, AllOf(HasSubstr("+QvnEnumPrinters() clientId="), HasSubstr("-QvnEnumPrinters() clientId="),
                         Not(HasSubstr("\r"))));
  const std::string last = ok({"log", "show", "--lines", "1"});
  EXPECT_EQ(std::count(last.begin(), last.end(), '\n'), 1);
  EXPECT_TRUE(log.ends_with(last));
  ok({"log", "off"});
  ok({"device", "list", "--json"});
  EXPECT_EQ(ok({"log", "show"}), log);
}

TEST_F(CommandLine, FollowsTheLogUntilInterrupted) {
  const std::filesystem::path file = platform::nativePath("c:\\qr__.log");
  std::ofstream(file) << "old\r\n";
  Child follower({QVN_COMMAND, "log", "follow"});
  EXPECT_EQ(follower.readLine(), "old");
  std::ofstream(file, std::ios::app) << "new\r\n";
  EXPECT_EQ(follower.readLine(), "new");
  std::filesystem::remove(file);
  std::ofstream(file) << "anew\r\n";
  EXPECT_EQ(follower.readLine(), "anew");
  follower.signal(SIGINT);
  EXPECT_EQ(follower.wait(), 130);
}

TEST_F(CommandLine, ImportsWhatItExported) {
  addPrinter("7", "LAB1");
  ok({"settings", "set", "CpdPrinterHostId", "000102030405"});
  const std::string saved = ok({"registry", "export"});
  ok({"registry", "import", "-"}, "[-Software]\n");
  EXPECT_EQ(qvn({"registry", "export"}).exitCode, 1);
  ok({"registry", "import", "-"}, saved);
  EXPECT_EQ(ok({"registry", "export"}), saved);
  EXPECT_EQ(ok({"get", "Portname", "--device", "7"}), "LAB1\n");

  const std::filesystem::path file = platform::nativePath("c:\\saved.qvnreg");
  ok({"registry", "export", file.string()});
  ok({"registry", "import", file.string()});
  EXPECT_EQ(ok({"registry", "export"}), saved);

  // A disk that is full leaves the copy that was there, and nothing else.
  const Result full = run({"/bin/sh", "-c",
                           "trap '' XFSZ; ulimit -f 0; exec " + std::string(QVN_COMMAND) +
                               " registry export '" + file.string() + "'"});
  EXPECT_EQ(full.exitCode, 1);
  EXPECT_THAT(full.errors, HasSubstr("cannot write '" + file.string() + "'"));
  ok({"registry", "import", file.string()});
  EXPECT_EQ(ok({"registry", "export"}), saved);
  EXPECT_FALSE(std::filesystem::exists(file.string() + ".part"));
}

}  // namespace
}  // namespace qvn::test
