// A program that uses the library's exported functions, with the IPv4 transport registered.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "qvn/qvn.h"
#include "support/content_of.h"
#include "support/process/child.h"
#include "support/simulator/simulator_process.h"

namespace qvn::test {

class LibraryClient : public testing::Test {
 protected:
  LibraryClient() : home_(std::getenv("QVN_HOME")) {
    // An unanswered question is over soon, so that tests which wait for that are quick.
    const std::string settings =
        "[-Software]\n"
        "[Software\\Quorin Tools\\Qvn\\Local\\qr__\\Ip1\\Settings]\n"
        "\"9200UnicastDiscoveryTimeout\"=dword:0000012C\n";
    EXPECT_EQ(qvn({"registry", "import", "-"}, settings).exitCode, 0);
    EXPECT_EQ(QvnInitialize(), 0u);
    EXPECT_EQ(QvnAddTransport("qvn_ipv4.so"), 0u);
    EXPECT_EQ(QvnGetClientId(&client), 0u);
  }
  ~LibraryClient() override { EXPECT_EQ(QvnUninitialize(), 0u); }

  void discover(const std::string& options) { EXPECT_EQ(QvnDiscovery(client, "IPv4", options.c_str()), 0u); }

  // The handles of the stored printers that the filter leaves, in ascending order.
  std::vector<std::uint32_t> printers(const char* filter = nullptr, const char* transport = "ALL_TRANSPORT") {
    found().clear();
    EXPECT_EQ(QvnEnumPrinters(client, transport, filter,
                              [](std::uint32_t, std::uint32_t handle) { found().push_back(handle); }),
              0u);
    std::sort(found().begin(), found().end());
    return found();
  }
  // The one printer with that serial number.
  std::uint32_t printerWithSerial(const std::string& serial) {
    std::uint32_t handle = 0;
    EXPECT_EQ(QvnEnumSpecificPrinter(client, ("IP_" + serial).c_str(), &handle), 0u) << serial;
    return handle;
  }

  std::string stringOf(std::uint32_t handle, const char* key) {
    char text[256] = "";
    std::uint32_t required = 0;
    EXPECT_EQ(QvnGetStringPrinter(client, handle, key, text, sizeof text, &required), 0u) << key;
    return text;
  }
  std::uint32_t longOf(std::uint32_t handle, const char* key) {
    std::uint32_t value = 0;
    EXPECT_EQ(QvnGetLongPrinter(client, handle, key, &value), 0u) << key;
    return value;
  }

  static std::string placeOf(const SimulatorProcess& device) {
    return device.address() + ":" + std::to_string(device.discoveryPort());
  }
  std::filesystem::path home() const { return home_; }

  std::uint32_t client = 0;

 private:
  static std::vector<std::uint32_t>& found() {
    static std::vector<std::uint32_t> handles;  // the callback has no argument of its own
    return handles;
  }

  std::filesystem::path home_;
};

}  // namespace qvn::test
