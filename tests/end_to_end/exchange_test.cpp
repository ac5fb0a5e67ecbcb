// What is asked of a device and set on it, from the command line to the device and back.
#include <gmock/gmock.h>
#include <signal.h>

#include <nlohmann/json.hpp>

#include "end_to_end/print/print_server.h"

namespace qvn::test {
namespace {

using nlohmann::json;
using testing::HasSubstr;

using Exchange = PrintServer;

TEST_F(Exchange, FindsTheDeviceOnceHoweverOftenItLooks) {
  start();
  const json found = json::parse(ok({"discover", "--transport", "IPv4", device().place(), "--json"}));
  ASSERT_EQ(found.size(), 3u);
  const char* families[] = {"CpdPrinter", "CpdScanner", "CpdHid"};
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(found[i]["family"], families[i]);
    EXPECT_EQ(found[i]["transport"], "IPv4");
  }
  EXPECT_EQ(json::parse(ok({"device", "list", "--json"})), found);
  ok({"transport", "remove", "IPv4"});
  EXPECT_EQ(ok({"transport", "list", "--json"}), "[]\n");
}

TEST_F(Exchange, PassesPacketsAndRefusesThoseOfTheLibrary) {
  start();
  ok({"log", "on"});
  EXPECT_THAT(ok({"npa", "A5", "00", "03", "50", "01", "00"}), testing::StartsWith("A5 00 "));
  EXPECT_THAT(ok({"log", "show"}), testing::ContainsRegex("Ip1Transport +connect 127.0.0.1:[0-9]+ rc=0"))
      << "what the transport's module writes itself";
  ok({"log", "off"});
  const Result refused = qvn({"npa", "A50006500500000000"});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_THAT(refused.errors, HasSubstr("result 5, QRN_ERROR_ACCESS_DENIED"));
  device().command("fault reject=summary");
  const Result rejected = qvn({"npa", "A5 00 03 50 01 00"});
  EXPECT_EQ(rejected.exitCode, 1);
  EXPECT_THAT(rejected.errors, HasSubstr("result 22, QRN_ERROR_BAD_COMMAND"));
}

TEST_F(Exchange, ShowsTheStatusOfADeviceThatAnswersAndOfOneThatDoesNot) {
  start();
  device().command("status 1 17408");
  const SimulatorProcess plain({"--family", "BpdPrinter", "--plain", "--serial", "PLAIN"});
  ok({"discover", plain.place()});
  const json status = json::parse(ok({"status", "--json", "--raw"}));
  ASSERT_EQ(status.size(), 2u);
  EXPECT_EQ(status[1]["answers"], nullptr);
  EXPECT_EQ(status[0]["answers"], true);
  EXPECT_EQ(status[0]["state"], "idle");
  EXPECT_EQ(status[0]["status"], "out of paper, paper jam");
  EXPECT_EQ(status[0]["reasons"], json({"media-empty-error", "media-jam-error"}));
  EXPECT_EQ(status[0]["cache"]["18"], "44 00");

  EXPECT_FALSE(json::parse(ok({"status", "--json"}))[0].contains("cache"));

  device().signal(SIGTERM);
  device().wait();
  const Result gone = qvn({"status", "--json"});
  EXPECT_EQ(gone.exitCode, 1);
  EXPECT_EQ(json::parse(gone.output)[0]["answers"], false);
  EXPECT_THAT(gone.errors, HasSubstr("not every printer answers"));
  EXPECT_THAT(gone.output, HasSubstr("nothing listens at 127.0.0.1 port "));
  // What is stored is no answer.
  const Result nobody = qvn({"discover", device().place()});
  EXPECT_EQ(nobody.exitCode, 1);
  EXPECT_THAT(nobody.output, HasSubstr("CpdPrinter"));
  EXPECT_THAT(nobody.errors, HasSubstr("nothing answered at " + device().place()));
}

TEST_F(Exchange, ChangesAnAttributeAndKeepsItOverADiscovery) {
  start();
  ok({"set", "Portname", "LAB1"});
  EXPECT_EQ(ok({"get", "Portname"}), "LAB1\n");
  ok({"discover", "--transport", "IPv4", device().place()});
  EXPECT_EQ(ok({"get", "Portname", "--device", "lab1"}), "LAB1\n");

  const Result readOnly = qvn({"set", "Device", "BpdPrinter"});
  EXPECT_EQ(readOnly.exitCode, 1);
  EXPECT_THAT(readOnly.errors, HasSubstr("the IPv4 transport changes Address, Nickname, Portname, PortType, "
                                         "TrueEndOfJob (result 87, QRN_ERROR_INVALID_PARAMETER)"));
}

}  // namespace
}  // namespace qvn::test
