// What tests of Bpd printers share.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>

#include "qvn/qvn.h"

namespace qvn::test {

// Bytes of all values.
inline std::string printData(std::size_t size) {
  std::mt19937 generator(11);
  std::string bytes(size, '\0');
  for (char& byte : bytes) byte = static_cast<char>(generator());
  return bytes;
}

// One job on an open printer, in writes of many sizes.
inline void printJob(std::uint32_t client, std::uint32_t handle, const std::string& jobName,
                     const std::string& data) {
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

}  // namespace qvn::test
