#include "common/exception.h"

#include <gmock/gmock.h>

namespace qvn {
namespace {

TEST(Win32Exception, DescribesPlaceMessageAndSystemText) {
  const Win32Exception exception("Event::set() failed", 2, "Event", 88);
  EXPECT_EQ(exception.getCode(), 2u);
  EXPECT_EQ(exception.getMessage(), "Event::set() failed");
  EXPECT_THAT(exception.describe(), testing::StartsWith("file:Event:88: Event::set() failed: Win32(2"));
  EXPECT_THAT(exception.getErrorText(),
              testing::Not(testing::AnyOf(testing::HasSubstr("\r"), testing::HasSubstr("\n"),
                                          testing::EndsWith(")"))));
}

TEST(Win32Exception, LeavesOutWhatItDoesNotKnow) {
  EXPECT_EQ(Win32Exception("m", 0, "", 0).describe(), "m");
  EXPECT_EQ(Win32Exception("m", 0, "F", 3).describe(), "file:F:3: m");
  EXPECT_EQ(Win32Exception("m", 0xABCDEF, "", 0).getErrorText(), "Win32(11259375Error getting message:317");
}

TEST(Exception, ShowsItsCodeInDecimal) {
  EXPECT_EQ(Exception("m", 7, "", 0).describe(), "m: 7");
  EXPECT_EQ(Exception("m", 0, "", 0).getErrorText(), "");
}

}  // namespace
}  // namespace qvn
