// The example of docs/transport-plugins.md: it is what is built, and it works.
#include <gtest/gtest.h>

#include <filesystem>

#include "ipv4/discovery/discovery_log.h"
#include "support/content_of.h"
#include "support/transport/logging_device.h"
#include "support/transport/transport_module.h"

namespace qvn::test {
namespace {

TEST(ExampleTransport, IsTheOneThatThePageShows) {
  std::string page = contentOf(QVN_SOURCE_DIR "/docs/transport-plugins.md");
  std::string shown;
  const std::string opening = "```cpp\n";
  for (std::size_t at; (at = page.find(opening)) != std::string::npos;) {
    page.erase(0, at + opening.size());
    const std::size_t end = page.find("```");
    shown += (shown.empty() ? "" : "\n") + page.substr(0, end);
    page.erase(0, end + 3);
  }
  EXPECT_EQ(shown, contentOf(QVN_SOURCE_DIR "/transports/example/loopback.cpp"));
}

TEST(ExampleTransport, PrintsIntoAFileAndAnswersTheJobsPackets) {
  const std::filesystem::path file = std::filesystem::path(std::getenv("QVN_HOME")) / "out.prn";
  DiscoveryLog found;
  TransportModule module(QVN_EXAMPLE_MODULE);
  found.attachTo(module.discoverer);
  EXPECT_EQ(module.discoverer.discover(""), 0u);
  EXPECT_EQ(module.discoverer.discover(file.string()), 0u);
  found.detachFrom(module.discoverer);
  ASSERT_EQ(found.texts.size(), 1u);

  LoggingDevice device;
  const OpenConnection bidi(module, found.texts[0], "bidi");
  {
    const OpenConnection print(module, found.texts[0], "print");
    ASSERT_EQ(print.openCode(), 0u);
    EXPECT_EQ(exchange(module, *bidi, device, "A5 00 06 50 05 00 00 00 00"), (ExchangeResult{0, 0}));
    Data page("page");
    print->write(page);
    EXPECT_EQ(page.getCount(), 4u);
    EXPECT_EQ(page.getRc(), 0u);
    EXPECT_EQ(exchange(module, *bidi, device, "A5 00 08 50 05 02 00 00 00 00 01"), (ExchangeResult{0, 0}));
    EXPECT_EQ(exchange(module, *bidi, device, "A5 00 05 50 E0 81 00 FF"), (ExchangeResult{0, 1460}));
    EXPECT_EQ(exchange(module, *bidi, device, ""), (ExchangeResult{0, 1460}));
  }
  const std::vector<std::string> packets = device.deliveries();
  ASSERT_EQ(packets.size(), 2u);
  EXPECT_EQ(packets[0], "A5 00 06 20 05 00 00 00 01");
  EXPECT_EQ(hex(packets[1]).size(), 26u);
  EXPECT_EQ(contentOf(file), "page");
}

}  // namespace
}  // namespace qvn::test
