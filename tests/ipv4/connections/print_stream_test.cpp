// The "print" connection, against peers that misbehave.
#include <gtest/gtest.h>

#include <thread>

#include "qvn/transport/lent_data.h"
#include "support/transport/transport_module.h"

namespace qvn::test {
namespace {

constexpr std::uint32_t kMebibyte = 1u << 20;
constexpr std::uint32_t kMoreThanIsBuffered = 32u << 20;

class PrintStream : public testing::Test {
 protected:
  PrintStream() { installSettings(); }
  TransportModule module;
};

TEST_F(PrintStream, TellsWhatWentOutWhenThePrinterStalls) {
  setSetting("PJLWriteTimeout", 50);
  Listener listener;
  const OpenConnection print(module, attributeText(listener.port(), 1), "print");
  Stream printer = listener.accept();
  Data block(kMoreThanIsBuffered, 'x');
  print->write(block);
  EXPECT_EQ(block.getRc(), 1460u);
  const std::uint32_t first = block.getCount();
  EXPECT_GT(first, 0u);
  EXPECT_EQ(first + block.getLength(), kMoreThanIsBuffered);
  std::size_t received = 0;
  std::thread reader([&] { received = printer.receive(kMoreThanIsBuffered).size(); });
  for (int tries = 0; tries < 100 && block.getLength() > 0; ++tries) print->write(block);
  EXPECT_EQ(block.getLength(), 0u) << "the rest can be written again";
  reader.join();
  EXPECT_EQ(received, kMoreThanIsBuffered);
}

TEST_F(PrintStream, FailsWhenThePrinterIsGone) {
  Listener listener;
  const OpenConnection print(module, attributeText(listener.port(), 1), "print");
  listener.accept().reset();
  std::uint32_t rc = 0;
  const std::vector<std::uint8_t> page(kMebibyte, 'x');
  for (int tries = 0; tries < 100 && rc == 0; ++tries) {
    LentData block(page.data(), kMebibyte);
    print->write(block);
    rc = block.getRc();
    EXPECT_EQ(block.getCount() + block.getLength(), kMebibyte);
    EXPECT_EQ(bytesOf(block).data(), page.data() + block.getCount()) << "what is lent is not copied";
  }
  EXPECT_EQ(rc, 64u);

  print->close();
  Data late(3, 'x');
  print->write(late);
  EXPECT_EQ(late.getRc(), 1229u);
  EXPECT_EQ(late.getLength(), 3u);
}

TEST_F(PrintStream, DoesNotCostAChattyPrinterTheEndOfTheJob) {
  Listener listener;
  Stream printer(-1);
  {
    const OpenConnection print(module, attributeText(listener.port(), 1), "print");
    printer = listener.accept();
    printer.send(repeated(50000, 'j'));  // nobody reads it
    Data block(100000, 'x');
    print->write(block);
    EXPECT_EQ(block.getRc(), 0u);
  }
  EXPECT_EQ(printer.receive(100001).size(), 100000u);
}

}  // namespace
}  // namespace qvn::test
