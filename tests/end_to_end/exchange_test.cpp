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
  const json found = json::parse(ok({"discover", "--transport", "IPv4", place(), "--json"}));
  ASSERT_EQ(found.size(), 3u);
  std::vector<std::string> families;
  for (const json& device : found) {
    families.push_back(device["family"]);
    EXPECT_EQ(device["transport"], "IPv4");
  }
  EXPECT_THAT(families, testing::ElementsAre("CpdPrinter", "CpdScanner", "CpdHid"));
  EXPECT_EQ(json::parse(ok({"device", "list", "--json"})), found);
  const json transports = json::parse(ok({"transport", "list", "--json"}));
  EXPECT_EQ(transports,
            json::parse(R"([{"name":"IPv4","kind":"NETWORK_TRANSPORT","module":"qvn_ipv4.so"}])"));

  ok({"transport", "remove", "IPv4"});
  EXPECT_EQ(ok({"transport", "list", "--json"}), "[]\n");
}

TEST_F(Exchange, PassesPacketsAndRefusesThoseOfTheLibrary) {
  start();
  EXPECT_THAT(ok({"npa", "A5", "00", "03", "50", "01", "00"}), testing::StartsWith("A5 00 "));
  const struct {
    std::string packet;
    int exitCode;
    std::string message;
  } cases[] = {
      {"A50006500500000000", 1, "result 5, QRN_ERROR_ACCESS_DENIED"},
      {"A5000650E073010100", 1, "result 5, QRN_ERROR_ACCESS_DENIED"},
      {"A500035001", 1, "result 5, QRN_ERROR_ACCESS_DENIED"},
  };
  for (const auto& [packet, exitCode, message] : cases) {
    const Result result = qvn({"npa", packet});
    EXPECT_EQ(result.exitCode, exitCode) << packet;
    EXPECT_THAT(result.errors, HasSubstr(message)) << packet;
  }
  device().command("fault reject=summary");
  const Result rejected = qvn({"npa", "A5 00 03 50 01 00"});
  EXPECT_EQ(rejected.exitCode, 1);
  EXPECT_THAT(rejected.errors, HasSubstr("result 22, QRN_ERROR_BAD_COMMAND"));
}

TEST_F(Exchange, ShowsTheStatusOfADeviceThatAnswersAndOfOneThatDoesNot) {
  start();
  const json status = json::parse(ok({"status", "--json"}));
  ASSERT_EQ(status.size(), 1u);
  EXPECT_EQ(status[0]["answers"], true);
  EXPECT_EQ(status[0]["state"], "idle");
  EXPECT_EQ(status[0]["cache"]["17"], "00");

  device().signal(SIGTERM);
  device().wait();
  const Result gone = qvn({"status", "--json"});
  EXPECT_EQ(gone.exitCode, 1);
  EXPECT_EQ(json::parse(gone.output)[0]["answers"], false);
  EXPECT_THAT(gone.errors, HasSubstr("not every printer answers"));
}

TEST_F(Exchange, ChangesAnAttributeAndKeepsItOverADiscovery) {
  start();
  ok({"set", "Portname", "LAB1"});
  EXPECT_EQ(ok({"get", "Portname"}), "LAB1\n");
  ok({"discover", "--transport", "IPv4", place()});
  EXPECT_EQ(ok({"get", "Portname", "--device", "lab1"}), "LAB1\n");

  const Result readOnly = qvn({"set", "Device", "BpdPrinter"});
  EXPECT_EQ(readOnly.exitCode, 1);
  EXPECT_THAT(readOnly.errors, HasSubstr("result 87, QRN_ERROR_INVALID_PARAMETER"));
}

TEST_F(Exchange, ForgetsADeviceUntilTheNextDiscovery) {
  start();
  const json devices = json::parse(ok({"device", "list", "--json"}));
  for (const json& device : devices) ok({"device", "remove", device["handle"].dump()});
  EXPECT_EQ(ok({"device", "list", "--json"}), "[]\n");
  EXPECT_EQ(json::parse(ok({"discover", "--transport", "IPv4", place(), "--json"})), devices);
}

}  // namespace
}  // namespace qvn::test
