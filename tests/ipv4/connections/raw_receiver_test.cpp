// The "print" connection of a plain printer, against a receiver that others wrote.
#include <gtest/gtest.h>

#include <random>

#include "ipv4/transport_module.h"
#include "raw_receivers/raw_receiver.h"

namespace qvn::test {
namespace {

TEST(RawReceiverTest, GetsEveryByteOfAJobAndNoOthers) {
  const std::unique_ptr<RawReceiver> receiver = RawReceiver::start();
  installSettings();
  TransportModule module;
  std::mt19937 generator(5);
  std::string job(5000000, '\0');
  for (char& byte : job) byte = static_cast<char>(generator());
  {
    const std::string attributes = attributeText(receiver->port(), 0);
    const OpenConnection bidi(module, attributes, "bidi");
    EXPECT_EQ(bidi.openCode(), 0u);
    const OpenConnection print(module, attributes, "print");
    ASSERT_EQ(print.openCode(), 0u);
    for (std::size_t at = 0; at < job.size();) {
      const std::size_t size = std::min<std::size_t>(job.size() - at, 1 + generator() % 300000);
      Data block(reinterpret_cast<const std::uint8_t*>(job.data()) + at, static_cast<std::uint32_t>(size));
      print->write(block);
      ASSERT_EQ(block.getRc(), 0u);
      ASSERT_EQ(block.getCount(), size);
      at += size;
    }
  }
  EXPECT_TRUE(receiver->receivedJob() == job);
}

}  // namespace
}  // namespace qvn::test
