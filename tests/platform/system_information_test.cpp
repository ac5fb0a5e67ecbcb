// Messages, error codes and facts about the system.
#include "platform/process/system_information.h"

#include <gmock/gmock.h>

#include <cerrno>

namespace qvn::platform {
namespace {

TEST(SystemInformation, MessagesAreSentencesAndOtherCodesHaveNone) {
  int messages = 0;
  for (std::uint32_t code = 0; code < 4000; ++code) {
    std::string text = "untouched";
    if (messageText(code, text) == kSuccess) {
      ++messages;
      EXPECT_THAT(text, testing::MatchesRegex("[A-Z][^\r\n]+[.]\r\n")) << code;
    } else {
      EXPECT_EQ(lastError(), kMessageNotFound);
      EXPECT_EQ(text, "untouched");
    }
  }
  EXPECT_GT(messages, 30);
  std::string text;
  EXPECT_EQ(messageText(5, text), kSuccess);
  EXPECT_EQ(text, "Access is denied.\r\n");
  for (const ErrorCode code : {kSuccess, kKeyHasChildren, kSpoolerUnavailable, kMonitorAlreadyInstalled}) {
    EXPECT_EQ(messageText(code, text), kSuccess) << code;
  }
  EXPECT_EQ(messageText(0xFFFFFFFF, text), kMessageNotFound);
}

TEST(SystemInformation, SystemErrorsKeepTheirMeaning) {
  const std::pair<int, ErrorCode> cases[] = {{0, kSuccess},           {ENOENT, kFileNotFound},
                                             {EACCES, kAccessDenied}, {EMFILE, kTooManyOpenFiles},
                                             {ENOSPC, kDiskFull},     {EXDEV, 1359}};
  for (const auto& [error, code] : cases) EXPECT_EQ(errorFromErrno(error), code) << error;
}

}  // namespace
}  // namespace qvn::platform
