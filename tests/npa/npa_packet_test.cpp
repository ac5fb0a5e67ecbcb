#include "npa/npa_packet.h"

#include <gtest/gtest.h>

#include <vector>

namespace qvn {
namespace {

using Bytes = std::vector<std::uint8_t>;

NpaPacket packet(const Bytes& bytes) { return {bytes.data(), bytes.size()}; }

TEST(NpaPacket, IsJudgedByItsBytes) {
  const struct {
    const char* what;
    Bytes bytes;
    bool validRequest, rejected, alert, allowed;
  } cases[] = {
      {"nothing", {}, false, false, false, false},
      {"one byte", {0xA5}, false, false, false, false},
      {"shortest request", {0xA5, 0, 2, 0x50, 1}, true, false, false, true},
      {"declared one too long", {0xA5, 0, 3, 0x50, 1}, false, false, false, false},
      {"declared one too short", {0xA5, 0, 1, 0x50, 1}, false, false, false, false},
      {"wrong start", {0xA4, 0, 2, 0x50, 1}, false, false, false, false},
      {"not a request", {0xA5, 0, 2, 0x20, 1}, false, false, false, false},
      {"rejected", {0xA5, 0, 2, 0x80, 1}, true, true, false, true},
      {"summary request", {0xA5, 0, 3, 0x50, 1, 0}, true, false, false, true},
      {"job start", {0xA5, 0, 6, 0x50, 5, 0, 0, 0, 0}, true, false, false, false},
      {"job end", {0xA5, 0, 6, 0x50, 5, 1, 0, 0, 0}, true, false, false, false},
      {"job query", {0xA5, 0, 8, 0x50, 5, 2, 0, 0, 0, 0, 1}, true, false, false, true},
      {"extended alerts, 9 bytes", {0xA5, 0, 6, 0x50, 0xE0, 0x73, 1, 1, 0}, true, false, false, false},
      {"extended alerts, 10 bytes", {0xA5, 0, 7, 0x50, 0xE0, 0x73, 1, 1, 0, 0}, true, false, false, true},
      {"alert", {0xA5, 0, 5, 0x50, 0xF0, 1, 0, 0}, true, false, true, true},
      {"alert too short", {0xA5, 0, 4, 0x50, 0xFF, 1, 0}, true, false, false, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const NpaPacket p = packet(c.bytes);
    EXPECT_EQ(p.isValidRequest(), c.validRequest);
    EXPECT_EQ(p.isRejected(), c.rejected);
    EXPECT_EQ(p.isAlert(), c.alert);
    EXPECT_EQ(p.isAllowedFromClient(), c.allowed);
  }
}

TEST(NpaPacket, KnowsTheReplyToARequest) {
  const Bytes getCache = {0xA5, 0, 5, 0x50, 0xE0, 0x81, 0, 0xFF};
  const struct {
    const char* what;
    Bytes request, reply;
    bool matches;
  } cases[] = {
      {"command alone", {0xA5, 0, 2, 0x50, 1}, {0xA5, 0, 2, 0, 1}, true},
      {"other command", {0xA5, 0, 2, 0x50, 1}, {0xA5, 0, 2, 0, 2}, false},
      {"other sub-command", {0xA5, 0, 3, 0x50, 5, 0}, {0xA5, 0, 3, 0, 5, 1}, false},
      {"request without sub-command", {0xA5, 0, 2, 0x50, 1}, {0xA5, 0, 3, 0, 1, 0}, false},
      {"parameter of an ordinary command", {0xA5, 0, 4, 0x50, 5, 0, 1}, {0xA5, 0, 4, 0, 5, 0, 2}, true},
      {"parameter of E0", {0xA5, 0, 4, 0x50, 0xE0, 3, 1}, {0xA5, 0, 4, 0, 0xE0, 3, 2}, false},
      {"cache, F0", getCache, {0xA5, 0, 7, 0, 0xE0, 0x81, 0, 0xF0, 0, 0}, true},
      {"cache, FF", getCache, {0xA5, 0, 7, 0, 0xE0, 0x81, 0, 0xFF, 0, 0}, true},
      {"cache, other", getCache, {0xA5, 0, 7, 0, 0xE0, 0x81, 0, 0xF1, 0, 0}, false},
      {"reply too short", getCache, {0xA5, 0, 1, 0}, false},
      {"reply not NPA", getCache, {0x1B, 0, 2, 0, 0xE0}, false},
      {"request empty", {}, {0xA5, 0, 2, 0, 1}, false},
  };
  for (const auto& c : cases) EXPECT_EQ(packet(c.reply).isReplyTo(packet(c.request)), c.matches) << c.what;
}

}  // namespace
}  // namespace qvn
