// Messages, error codes and facts about the system.
#include "platform/process/system_information.h"

#include <gmock/gmock.h>

#include <cerrno>

namespace qvn::platform {
namespace {

using testing::EndsWith;
using testing::MatchesRegex;

TEST(SystemInformation, EveryCodeThatIsAnsweredHasAMessage) {
  const std::uint32_t codes[] = {
      0,
      1,
      5,
      6,
      22,
      52,
      87,
      122,
      170,
      183,
      258,
      1168,
      1359,
      1460,
      1629,
      1796,
      3006,
      kFileNotFound,
      kPathNotFound,
      kTooManyOpenFiles,
      kNotEnoughMemory,
      kWriteFault,
      kDiskFull,
      kModuleNotFound,
      kProcedureNotFound,
      kBadExecutableFormat,
      kNameTooLong,
      kMoreData,
      kNoMoreItems,
      kNotOwner,
      kMessageNotFound,
      kRegistryCorrupt,
      kRegistryIoFailed,
      kKeyDeleted,
      kKeyHasChildren,
  };
  for (const std::uint32_t code : codes) {
    std::string text;
    EXPECT_EQ(messageText(code, text), kSuccess) << code;
    EXPECT_THAT(text, MatchesRegex("[A-Z][^\r\n]+[.]\r\n")) << code;
  }
  std::string text;
  EXPECT_EQ(messageText(5, text), kSuccess);
  EXPECT_EQ(text, "Access is denied.\r\n");
}

TEST(SystemInformation, OtherCodesHaveNoMessage) {
  for (const std::uint32_t code : {7U, 260U, 99999U, 0xFFFFFFFFU}) {
    std::string text = "untouched";
    EXPECT_EQ(messageText(code, text), kMessageNotFound) << code;
    EXPECT_EQ(lastError(), kMessageNotFound);
    EXPECT_EQ(text, "untouched");
  }
}

TEST(SystemInformation, SystemErrorsKeepTheirMeaning) {
  EXPECT_EQ(errorFromErrno(0), kSuccess);
  EXPECT_EQ(errorFromErrno(ENOENT), kFileNotFound);
  EXPECT_EQ(errorFromErrno(EACCES), kAccessDenied);
  EXPECT_EQ(errorFromErrno(EMFILE), kTooManyOpenFiles);
  EXPECT_EQ(errorFromErrno(ENOSPC), kDiskFull);
  EXPECT_EQ(errorFromErrno(EXDEV), 1359U);
}

TEST(SystemInformation, TheSystemIsOfTheNtFamily) {
  OsVersionInfo version{};
  std::string name;
  EXPECT_EQ(osVersion(version), kSuccess);
  EXPECT_EQ(version.platformId, 2U);
  EXPECT_EQ(version.majorVersion, 10U);
  EXPECT_EQ(computerName(name), kSuccess);
  EXPECT_FALSE(name.empty());
  EXPECT_GE(ansiCodePage(), 1000U);
  EXPECT_LE(ansiCodePage(), 9999U);
}

}  // namespace
}  // namespace qvn::platform
