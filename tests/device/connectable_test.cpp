#include "qvn/transport/connectable.h"

#include <gtest/gtest.h>

#include "qvn/transport/data.h"

namespace qvn {
namespace {

struct Counted : Connectable {
  std::uint32_t doOpen() override { return ++opens, result; }
  std::uint32_t doClose() override { return ++closes, 9; }
  std::uint32_t result = 0;
  int opens = 0;
  int closes = 0;
};

TEST(Connectable, OnlyTheFirstOpenAndTheLastCloseDoSomething) {
  Counted c;
  c.result = 5;
  EXPECT_EQ(c.open(), 5u);
  EXPECT_EQ(c.close(), 0u) << "a failed open does not count";
  c.result = 0;
  EXPECT_EQ(c.open(), 0u);
  EXPECT_EQ(c.open(), 0u);
  EXPECT_EQ(c.opens, 2);
  EXPECT_EQ(c.close(), 0u);
  EXPECT_EQ(c.closes, 0);
  EXPECT_EQ(c.close(), 9u);
  EXPECT_EQ(c.close(), 0u) << "one close too many";
  EXPECT_EQ(c.open(), 0u);
  EXPECT_EQ(c.opens, 3);
}

TEST(Connectable, HasTwoChildSlots) {
  Counted parent;
  Counted child;
  EXPECT_TRUE(parent.setChild(1, &child));
  EXPECT_FALSE(parent.setChild(2, &child));
  EXPECT_EQ(parent.getChild(1), &child);
  EXPECT_EQ(parent.getChild(0), nullptr);
  EXPECT_EQ(parent.getChild(2), nullptr);
  struct Sees : Visitor {
    void visit(Connectable& connection) override { seen = &connection; }
    Connectable* seen = nullptr;
  } visitor;
  parent.acceptChild(0, visitor);
  EXPECT_EQ(visitor.seen, nullptr);
  parent.acceptChild(1, visitor);
  EXPECT_EQ(visitor.seen, &child);
  parent.releaseChild1();
  EXPECT_EQ(parent.getChild(1), nullptr);
}

TEST(Connectable, WritesNothingUnlessItSaysHow) {
  Counted c;
  Data data("abc", 3);
  c.write(data);
  EXPECT_EQ(data.getRc(), 1u);
  EXPECT_EQ(data.getCount(), 0u);
  EXPECT_EQ(data.getLength(), 3u);
}

}  // namespace
}  // namespace qvn
