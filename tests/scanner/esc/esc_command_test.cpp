// Which command some bytes are, what answers it, how long it is, and how it is put together from pieces.
#include <gmock/gmock.h>

#include "scanner/esc/esc_command_factory.h"
#include "scanner/esc/esc_commands.h"
#include "scanner/esc/standard_esc_command.h"
#include "support/library_fixture.h"
#include "support/throws.h"

namespace qvn::test {
namespace {

Data fromHex(std::string_view text) {
  Data data;
  for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
    const auto byte = static_cast<std::uint8_t>(std::stoul(std::string(text.substr(i, 2)), nullptr, 16));
    data.append(&byte, 1);
  }
  return data;
}

std::unique_ptr<EscCommand> classify(const Data& data) {
  return EscCommandFactory::getInstance().makeCommand(data);
}

struct Expected {
  const char* bytes;
  const char* name;
  const char* reply;  // the shortest; empty for none
  std::uint32_t payload;
  const char* replyName;
};

// Each class with parameters where it has them, and with a payload length of 0x0201 in every place a length
// may be.
const Expected kExpected[] = {
    {"1B43535301020304", "HCopyPaperSizeSetEscCommand", "1B5353000000", 0, "PStatusEscCommand"},
    {"1B43504700000000", "HCopyParameterGetEscCommand", "1B6364", 0, "PCopyDataEscCommand"},
    {"1B44434C00000000", "HDevCopyLockEscCommand", "1B5353", 0, "PStatusEscCommand"},
    {"1B44435500000000", "HDevCopyUnlockEscCommand", "1B5353", 0, "PStatusEscCommand"},
    {"1B44485201020102", "HDevNetworkScanRequestEscCommand", "1B466872", 0,
     "PDevNetworkScanStatusEscCommand"},
    {"1B44504701020102", "HDevParameterGetEscCommand", "1B647067", 0, "PDevParameterGetStatusEscCommand"},
    {"1B44505305060102", "HDevParameterSetEscCommand", "1B5353", 0x0201, "PStatusEscCommand"},
    {"1B44534C00000000", "HDevScanLockEscCommand", "1B5353", 0, "PStatusEscCommand"},
    {"1B44535500000000", "HDevScanUnlockEscCommand", "1B5353", 0, "PStatusEscCommand"},
    {"1B53410000000000", "HScanAbortEscCommand", "", 0, ""},
    {"1B53460000000000", "HScanAdfStatusEscCommand", "1B5353", 0, "PStatusEscCommand"},
    {"1B534D0102030405", "HScanClippingEscCommand", "1B5353", 0, "PStatusEscCommand"},
    {"1B53430102030405", "HScanColorFormatEscCommand", "1B5353", 0, "PStatusEscCommand"},
    {"1B53440102030405", "HScanDpiEscCommand", "1B5353", 0, "PStatusEscCommand"},
    {"1B53470000000000", "HScanGoEscCommand", "", 0, ""},
    {"1B53490102030405", "HScanImageFilterEscCommand", "1B5353", 0, "PStatusEscCommand"},
    {"1B534A0102030405", "HScanImageProcessingEscCommand", "1B5353", 0, "PStatusEscCommand"},
    {"1B53520102030405", "HScanRawEscCommand", "1B5353", 0, "PStatusEscCommand"},
    {"1B53580102030405", "HScanExposureTimeEscCommand", "1B5353", 0, "PStatusEscCommand"},
    {"1B534F0102030405", "HScanOffsetEscCommand", "1B5353", 0, "PStatusEscCommand"},
    {"1B535A0102030405", "HScanSizeEscCommand", "1B5353", 0, "PStatusEscCommand"},
    {"1B53560000000000", "HScanVersionEscCommand", "1B7376", 0, "PScanVersionEscCommand"},
    {"1B63640102030405", "PCopyDataEscCommand", "", 0x0201, ""},
    {"1B64706703040102", "PDevParameterGetStatusEscCommand", "", 0x0201, ""},
    {"1B46687201020304", "PDevNetworkScanStatusEscCommand", "", 0, ""},
    {"1B73640102030405", "PScanDataEscCommand", "", 0x0201, ""},
    {"1B73760102030405", "PScanVersionEscCommand", "", 0x0201, ""},
    {"1B53530B02030405", "PStatusEscCommand", "", 0, ""},
    {"1B53540000000000", "HScanSmartEscCommand", "1B5353", 0, "PStatusEscCommand"},
    {"1B46040001020304", "HFaxQueryBufferSpaceEscCommand", "1B460400", 0x0201,
     "HFaxQueryBufferSpaceEscCommand"},
    {"1B46050001020304", "HFaxAbortEscCommand", "1B460500", 0, "HFaxAbortEscCommand"},
    {"1B46020001020304", "HFaxModemDataGetEscCommand", "1B460200", 0x0201, "HFaxModemDataGetEscCommand"},
    {"1B46010001020304", "HFaxModemDataSendEscCommand", "1B460100", 0x0201, "HFaxModemDataSendEscCommand"},
    {"1B46030001020304", "HFaxModemStatusEscCommand", "1B460300", 0x0201, "HFaxModemStatusEscCommand"},
    {"1B44484C01020304", "HDevHostNameListSetEscCommand", "1B44484C", 0, "HDevHostNameListSetEscCommand"},
    {"1B534B0001020304", "HScanStatusGetEscCommand", "1B534B00", 0, "HScanStatusGetEscCommand"},
};

TEST(EscCommand, EveryClassIsRecognisedWithItsReplyAndItsPayload) {
  ASSERT_EQ(std::size(kExpected), esc::kCommands.size());
  for (std::size_t row = 0; row < std::size(kExpected); ++row) {
    const Expected& expected = kExpected[row];
    SCOPED_TRACE(expected.name);
    EXPECT_STREQ(esc::kCommands[row].name, expected.name) << "the order decides between classes alike";
    const Data data = fromHex(expected.bytes);
    const auto command = classify(data);
    EXPECT_EQ(command->getName(), expected.name);
    EXPECT_TRUE(command->equals(data));
    EXPECT_EQ(command->getHeaderLength(), 8u);
    EXPECT_EQ(command->getPayloadLength(), expected.payload);
    const Data reply = fromHex(expected.reply);
    EXPECT_EQ(command->expectsResponse(), reply.getLength() != 0);
    EXPECT_EQ(command->isResponse(reply), reply.getLength() != 0);
    if (reply.getLength() == 0) continue;
    EXPECT_FALSE(command->isResponse(Data(reply.getBuffer(), reply.getLength() - 1))) << "too short";
    Data other = reply;
    other.getBuffer()[reply.getLength() - 1] ^= 1;
    EXPECT_FALSE(command->isResponse(other));
    for (const Expected& candidate : kExpected) {
      EXPECT_EQ(command->isResponse(*classify(fromHex(candidate.bytes))),
                std::string(candidate.name) == expected.replyName)
          << candidate.name;
    }
  }
}

TEST(EscCommand, AParameterMakesACommandWithoutParametersAnother) {
  for (const esc::Command& row : esc::kCommands) {
    for (std::size_t at = 1; at < esc::kHeaderLength; ++at) {
      Data data(row.header.data(), esc::kHeaderLength);
      data.getBuffer()[at] ^= 0x40;
      EXPECT_EQ(classify(data)->getName() == row.name, at >= row.recognisedBy) << row.name << " " << at;
    }
  }
  const auto go = classify(fromHex("1B53470100000000"));
  EXPECT_EQ(go->getName(), "StandardEscCommand");
  EXPECT_FALSE(go->expectsResponse());
}

TEST(EscCommand, WhatIsNotInTheTableTellsForItself) {
  const auto command = classify(fromHex("1B58595A07018000"));
  EXPECT_EQ(command->getName(), "StandardEscCommand");
  EXPECT_TRUE(command->expectsResponse());
  EXPECT_EQ(command->getPayloadLength(), 0x0107u);
  EXPECT_TRUE(command->isResponse(fromHex("1B58595A00000000")));
  EXPECT_FALSE(command->isResponse(fromHex("1B58595A000000")));
  EXPECT_FALSE(command->isResponse(fromHex("1B58595B00000000")));
  EXPECT_TRUE(command->isResponse(*classify(fromHex("1B58595A00000000"))));
  EXPECT_FALSE(classify(fromHex("1B58595A00007F00"))->expectsResponse());
}

TEST(EscCommand, WhatIsNoCommandIsNull) {
  for (const char* bytes : {"", "1B", "1B5353", "1B535300000000", "005353000000000000", "FF"}) {
    const auto command = classify(fromHex(bytes));
    EXPECT_EQ(command->getName(), "NullEscCommand") << bytes;
    EXPECT_FALSE(command->expectsResponse());
    EXPECT_FALSE(command->isResponse(fromHex("1B53530000000000")));
    EXPECT_EQ(command->getHeaderLength(), 0u);
    EXPECT_EQ(command->getLength(), 0u);
  }
}

TEST(EscCommand, AClassRefusesTheBytesOfAnother) {
  EXPECT_THAT(
      [] { HScanDpiEscCommand{fromHex("1B53430000000000")}; },
      throwsWin32("HScanDpiEscCommand(const Data&): data does not contain a HScanDpiEscCommand.", 87));
  EXPECT_THAT([] { StandardEscCommand{fromHex("1B")}; },
              throwsWin32("StandardEscCommand(const Data&): command is not a EscCommand", 87));
  EXPECT_EQ(HScanDpiEscCommand().create(fromHex("1B53430000000000")), nullptr);
  const StandardEscCommand standard(fromHex("1B58595A00000080"));
  EXPECT_EQ(standard.create(fromHex("1B")), nullptr);
  EXPECT_TRUE(standard.create(fromHex("1B53430000000000"))->equals(fromHex("1B53430000000000")));
  EXPECT_TRUE(HScanGoEscCommand().equals(fromHex("1B53470000000000")));
  EXPECT_TRUE(HScanDpiEscCommand().notEquals(fromHex("1B53440000000001")));
  EXPECT_FALSE(HScanAbortEscCommand().equals(static_cast<const EscCommand&>(HScanGoEscCommand())));
}

TEST(EscCommand, APayloadIsTakenFromWhatArrives) {
  PScanDataEscCommand command(fromHex("1B73640A00000000"));
  Data incoming(30, 7);
  EXPECT_TRUE(command.takeFrom(incoming));
  EXPECT_EQ(incoming.getCount(), 10u);
  EXPECT_EQ(incoming.getRc(), 0u);
  EXPECT_EQ(incoming.getLength(), 30u) << "what arrived stays whole";
  EXPECT_EQ(command.getLength(), 18u);
  EXPECT_FALSE(command.takeFrom(incoming));

  // In three pieces, of which the last is more than is missing.
  HDevParameterSetEscCommand set(fromHex("1B44505300000500"));
  Data piece(2, 1);
  EXPECT_TRUE(set.takeFrom(piece));
  EXPECT_TRUE(set.takeFrom(piece));
  EXPECT_TRUE(set.takeFrom(piece));
  EXPECT_EQ(piece.getCount(), 1u);
  EXPECT_FALSE(set.takeFrom(piece));
  EXPECT_EQ(set.getLength(), 13u);

  HFaxModemDataSendEscCommand fax(fromHex("1B46010005000000"));
  EXPECT_FALSE(fax.takeFrom(incoming)) << "has a payload, but does not come in pieces";
}

// Recognised by its last byte.
class LastByteCommand : public EscCommand {
 public:
  LastByteCommand() = default;
  explicit LastByteCommand(const Data& data) : EscCommand(data) {}
  bool isA(const Data& data) const override { return data.getBuffer()[data.getLength() - 1] == 0x99; }
  std::string getName() const override { return "LastByteCommand"; }
  std::unique_ptr<EscCommand> create(const Data& data) const override {
    return std::make_unique<LastByteCommand>(data);
  }
  std::unique_ptr<EscCommand> create() const override { return std::make_unique<LastByteCommand>(); }
};

TEST(EscCommand, AnotherClassComesBehindThoseOfTheTable) {
  EscCommandFactory::getInstance().registerCommand(LastByteCommand());
  EXPECT_EQ(classify(fromHex("1B58595A00000099"))->getName(), "LastByteCommand");
  EXPECT_EQ(classify(fromHex("1B58595A00000098"))->getName(), "StandardEscCommand");
  EXPECT_EQ(classify(fromHex("1B53440000000099"))->getName(), "HScanDpiEscCommand");
}

}  // namespace
}  // namespace qvn::test
