#include "qvn/transport/data.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "qvn/transport/lent_data.h"

namespace qvn {
namespace {

std::string text(const Data& data) { return std::string(bytesAsText(data)); }

TEST(Data, IsMadeFromBytesFillTextOrNothing) {
  EXPECT_EQ(text(Data("abc", 3)), "abc");
  EXPECT_EQ(text(Data(3, 'x')), "xxx");
  EXPECT_EQ(text(Data(std::string_view("ab\0c", 4))), std::string("ab\0c", 4));
  EXPECT_EQ(text(Data(std::string_view())), "");
  EXPECT_EQ(Data(nullptr, 5).getLength(), 0u);
}

TEST(Data, CopyTakesTheValidBytesTheCodeAndTheCount) {
  Data original("0123456789", 10);
  original.consume(4, false);
  original.setRc(31);
  original.setCount(12);
  Data copy(original);
  Data assigned("something else", 14);
  assigned = original;
  for (Data* data : {&copy, &assigned}) {
    EXPECT_EQ(text(*data), "456789");
    EXPECT_EQ(data->getRc(), 31u);
    EXPECT_EQ(data->getCount(), 12u);
  }
  copy.getBuffer()[0] = 'X';
  EXPECT_EQ(text(original), "456789") << "storage is not shared";
  Data& self = assigned;
  assigned = self;
  EXPECT_EQ(text(assigned), "456789");
}

TEST(Data, ConsumeTakesAllOrNothing) {
  Data data("0123456789", 10);
  data.consume(11, false);
  EXPECT_EQ(text(data), "0123456789");
  data.consume(3, true);
  EXPECT_EQ(text(data), "3456789");
  data.consume(7, false);
  EXPECT_EQ(data.getLength(), 0u);
}

TEST(Data, AppendKeepsTheReadPositionAndMayAppendToItself) {
  Data data("abcdef", 6);
  data.consume(2, false);
  const std::uint8_t* const start = data.append("gh", 2);
  EXPECT_EQ(start, data.getBuffer());
  EXPECT_EQ(text(data), "cdefgh");
  data.append(data);
  EXPECT_EQ(text(data), "cdefghcdefgh");
  data.append(nullptr, 7);
  EXPECT_EQ(data.getLength(), 12u);
}

TEST(Data, FillFitsOrFails) {
  Data reply(1024, 0xFF);
  EXPECT_FALSE(reply.fill(std::string(2000, 'a').data(), 2000));
  EXPECT_EQ(reply.getLength(), 1024u);
  EXPECT_TRUE(reply.fill("12345678", 8));
  EXPECT_EQ(text(reply), "12345678");
  EXPECT_TRUE(reply.fill("", 0));
  EXPECT_EQ(reply.getLength(), 0u);
}

TEST(Data, ResetForgetsEverything) {
  Data data("abc", 3);
  data.setRc(5);
  data.setCount(7);
  data.reset();
  EXPECT_EQ(data.getLength() + data.getRc() + data.getCount(), 0u);
}

TEST(LentData, IsReadInPlaceAndCopiedBeforeItChanges) {
  const std::string lent = "client";
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(lent.data());
  const struct {
    const char* change;
    std::function<void(Data&)> apply;
    const char* content;
  } cases[] = {
      {"replace", [](Data& data) { data = Data(std::string_view("another")); }, "another"},
      {"append", [](Data& data) { data.append("!", 1); }, "lient!"},
      {"append itself", [](Data& data) { data.append(data); }, "lientlient"},
      {"write", [](Data& data) { data.getBuffer()[0] = 'X'; }, "Xient"},
      {"fill", [](Data& data) { data.fill("XY", 2); }, "XY"},
      {"reset", [](Data& data) { data.reset(); }, ""},
  };
  for (const auto& c : cases) {
    LentData whole(bytes, 6);
    Data& data = whole;
    data.consume(1, true);
    EXPECT_EQ(bytesOf(data).data(), bytes + 1) << c.change;
    EXPECT_EQ(text(Data(data)), "lient") << c.change;
    c.apply(data);
    EXPECT_EQ(text(data), c.content) << c.change;
    EXPECT_EQ(lent, "client") << c.change;
  }
}

}  // namespace
}  // namespace qvn
