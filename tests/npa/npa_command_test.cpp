#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "common/logging/library_logger.h"
#include "common/settings/localize.h"
#include "npa/alert_registration.h"
#include "npa/dc_summary_command.h"
#include "npa/job_commands.h"

namespace qvn {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes copyOf(const Data& data) { return {data.getBuffer(), data.getBuffer() + data.getLength()}; }
Data dataOf(const Bytes& bytes) { return {bytes.data(), static_cast<std::uint32_t>(bytes.size())}; }

TEST(EndJobCommand, CarriesTheJobsId) {
  EndJobCommand end;
  end.setJobId(0x1234);
  EXPECT_EQ(copyOf(end.packet()), (Bytes{0xA5, 0, 6, 0x50, 5, 1, 0, 0x12, 0x34}));
}

TEST(StartJobCommand, TakesTheJobIdOfAMatchingReplyOnly) {
  const StartJobCommand command;
  std::uint32_t id = 1;
  EXPECT_FALSE(command.getJobId(dataOf({0xA5, 0, 6, 0, 5, 1, 0, 2, 3}), id));
  EXPECT_FALSE(command.getJobId(dataOf({0xA5, 0, 5, 0, 5, 0, 0, 2}), id)) << "ends within the id";
  EXPECT_EQ(id, 1u);
  EXPECT_TRUE(command.getJobId(dataOf({0xA5, 0, 6, 0, 5, 0, 0, 2, 3}), id));
  EXPECT_EQ(id, 0x203u);
}

TEST(NamePrintJobCommand, CarriesTheJobsTextWithItsTerminator) {
  NamePrintJobCommand command;
  command.setJobInfo(0x0102, "h", "j", "u", "q", "a", "");
  const Bytes packet = copyOf(command.packet());
  ASSERT_EQ(packet.size(), 35u);
  EXPECT_EQ((Bytes{packet.begin(), packet.begin() + 9}), (Bytes{0xA5, 0, 32, 0x50, 0xE0, 2, 1, 2, 26}));
  EXPECT_EQ(std::string(packet.begin() + 9, packet.end()), std::string("HT:h;UR:u;JN:j;QU:q;AN:a;\0", 26));

  NamePrintJobCommand longer;
  longer.setJobInfo(1, std::string(300, 'h'), "j", "u", "q", "a", "SC:TCP 9400;");
  EXPECT_TRUE(NpaPacket(longer.packet()).isLengthConsistent());
}

TEST(LockDeviceCommand, IsGrantedByExactlyOneReply) {
  EXPECT_TRUE(LockDeviceCommand::isGranted(dataOf({0xA5, 0, 6, 0, 0xE0, 0x82, 2, 1, 0})));
  EXPECT_FALSE(LockDeviceCommand::isGranted(dataOf({0xA5, 0, 6, 0, 0xE0, 0x82, 2, 1, 1})));
  EXPECT_FALSE(LockDeviceCommand::isGranted(dataOf({0xA5, 0, 7, 0, 0xE0, 0x82, 2, 1, 0, 0})));
  EXPECT_FALSE(LockDeviceCommand::isGranted(dataOf({0xA5, 0, 5, 0, 0xE0, 0x82, 2, 1})));
}

TEST(SetLastDateCommand, CountsDaysFrom2002) {
  EXPECT_EQ(SetLastDateCommand::dayCount(1009843199), 0u);
  EXPECT_EQ(SetLastDateCommand::dayCount(1009843200 + 10 * 86400), 10u);
  SetLastDateCommand command;
  command.setDate(0x1000A);
  command.setHostId({1, 2, 3, 4, 5, 6});
  EXPECT_EQ(copyOf(command.packet()),
            (Bytes{0xA5, 0, 0x0D, 0x50, 0xE0, 0x84, 0, 1, 0, 0x0A, 1, 2, 3, 4, 5, 6}));
}

TEST(GetCacheCommand, NeedsTenBytesOfReply) {
  const GetCacheCommand command;
  EXPECT_FALSE(command.isReplyTo(dataOf({0xA5, 0, 6, 0, 0xE0, 0x81, 0, 0xF0, 0})));
  EXPECT_TRUE(command.isReplyTo(dataOf({0xA5, 0, 7, 0, 0xE0, 0x81, 0, 0xF0, 0, 0})));
  EXPECT_TRUE(GetCacheCommand::isRequest(command.packet()));
  EXPECT_FALSE(GetCacheCommand::isRequest(dataOf({0xA5, 0, 5, 0x50, 0xE0, 0x81, 0})));
}

TEST(DcSummaryCommand, ReadsTheSummary) {
  static const char moduleAddress = 0;
  Localize::createInstance(&moduleAddress);
  BasicLogger::setInstance(std::make_unique<LibraryLogger>());
  const DcSummaryCommand command;
  Bytes reply = {0xA5, 0, 0, 0, 1, 0, 7, 8, 9};
  reply.resize(29);
  reply.insert(reply.end(), {0x10, 0x20});
  std::uint32_t size = 0;
  DcSummaryCommand::Revisions revisions{};
  EXPECT_TRUE(command.getMaxPacketSize(dataOf(reply), size));
  EXPECT_EQ(size, 0x1020u);
  EXPECT_TRUE(command.getNpaVersions(dataOf(reply), revisions));
  EXPECT_EQ(revisions, (DcSummaryCommand::Revisions{7, 8, 9}));
  reply.resize(30);
  EXPECT_FALSE(command.getMaxPacketSize(dataOf(reply), size));
  reply[4] = 2;
  EXPECT_FALSE(command.getNpaVersions(dataOf(reply), revisions));
  EXPECT_EQ(size, 0x1020u);
  BasicLogger::destroyInstance();
}

// Each with the bits that it owns.
std::vector<std::pair<std::shared_ptr<AlertRegistrationCommand>, std::uint32_t>> registrations() {
  return {{std::make_shared<RegisterForDeviceStatusAlertsCommand>(), 0x3FF},
          {std::make_shared<RegisterForQuorinExtensionAlertsCommand>(), 0x7FC00},
          {std::make_shared<RegisterForPanelAlertsCommand>(), 0x80000},
          {std::make_shared<RegisterForQuorinExtendedAlertsCommand>(), 0x100000},
          {std::make_shared<RegisterForQuorinExtendedAlertsWithLanguageIdCommand>(), 0x3E00000}};
}

TEST(AlertRegistration, EachMaskBitBelongsToOneCommand) {
  for (std::uint32_t bit = 1; bit != 0; bit <<= 1) {
    for (const auto& [command, owned] : registrations()) {
      EXPECT_EQ(command->bidiRequired(bit, 0), (owned & bit) != 0) << std::hex << bit;
      EXPECT_EQ(command->bidiRequired(0, bit), (owned & bit) != 0) << std::hex << bit;
      EXPECT_FALSE(command->bidiRequired(bit, bit));
    }
  }
}

TEST(AlertRegistration, TurnsTheMaskIntoParameterBytes) {
  const struct {
    std::size_t command;
    std::uint32_t mask;
    Bytes parameters;  // from byte 6 on
  } cases[] = {
      {0, 0x3FF, {0xC0, 0x0F, 0x0F}},    {1, 0x7FC00, {0xFF}},
      {2, 0x80000, {0x03, 0x01}},        {2, 0, {0x03, 0x00}},
      {3, 0x100000, {0x01, 0x01, 0x10}}, {4, 0x3E00000, {0x07, 0x08, 0, 0x11, 0x07, 0, 0, 0, 0, 0, 0x01, 0}},
  };
  const auto parametersOf = [](AlertRegistrationCommand& command, std::uint32_t mask) {
    command.setMask(0xFFFFFFFF);
    command.setMask(mask);
    const Bytes packet = copyOf(command.packet());
    return Bytes(packet.begin() + 6, packet.end());
  };
  for (const auto& c : cases) {
    EXPECT_EQ(parametersOf(*registrations()[c.command].first, c.mask), c.parameters) << std::hex << c.mask;
  }
  // The bits one by one, from the lowest: which byte of the packet it is in, and which bit there.
  const std::pair<std::size_t, std::uint8_t> bits[] = {
      {7, 0x08}, {7, 0x04}, {7, 0x02}, {7, 0x01}, {8, 0x08},  {8, 0x02},  {8, 0x04},  {8, 0x01}, {6, 0x40},
      {6, 0x80}, {6, 0x01}, {6, 0x02}, {6, 0x04}, {6, 0x08},  {6, 0x10},  {6, 0x20},  {6, 0x40}, {6, 0x80},
      {6, 0x80}, {7, 0x01}, {8, 0x10}, {9, 0x01}, {10, 0x01}, {10, 0x02}, {10, 0x04}, {9, 0x10}};
  std::uint32_t mask = 1;
  for (const auto& [offset, packetBit] : bits) {
    for (const auto& [command, owned] : registrations()) {
      if ((owned & mask) == 0) continue;
      Bytes expected = parametersOf(*command, 0);
      expected[offset - 6] = packetBit;
      EXPECT_EQ(parametersOf(*command, mask), expected) << std::hex << mask;
    }
    mask <<= 1;
  }
}

}  // namespace
}  // namespace qvn
