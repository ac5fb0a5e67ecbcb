// A program that uses the library's exported functions, with the IPv4 transport registered.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "qvn/qvn.h"
#include "support/content_of.h"
#include "support/process/successful_run.h"
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
    ok({"registry", "import", "-"}, settings);
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

  // One job on an open printer, in writes of many sizes.
  void printJob(std::uint32_t handle, const std::string& jobName, const std::string& data) {
    ASSERT_EQ(QvnStartJobPrinter(client, handle, 7, "queue", "host", jobName.c_str(), "anna"), 0u);
    std::mt19937 generator(13);
    for (std::size_t at = 0; at < data.size();) {
      const std::size_t size = std::min<std::size_t>(data.size() - at, 1 + generator() % 300000);
      std::uint32_t taken = 0;
      ASSERT_EQ(QvnWritePrinter(client, handle, reinterpret_cast<const std::uint8_t*>(data.data()) + at,
                                static_cast<std::uint32_t>(size), &taken),
                0u);
      ASSERT_GT(taken, 0u);
      at += taken;
    }
    ASSERT_EQ(QvnEndJobPrinter(client, handle), 0u);
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
