#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "bidi/element/element_helpers.h"
#include "bidi/element/integer_elem.h"
#include "bidi/element/list_elem.h"
#include "bidi/element/map_elem.h"
#include "bidi/element/null_elem.h"
#include "bidi/element/string_elem.h"

namespace qvn::test {
namespace {

using testing::ElementsAre;

constexpr std::size_t kDeep = 1'000'000;

std::unique_ptr<Element> number(std::int32_t value) { return std::make_unique<IntegerElem>(value); }

// Counts those that are alive.
class CountedElem : public NullElem {
 public:
  explicit CountedElem(int& alive) : alive_(alive) { ++alive_; }
  ~CountedElem() override { --alive_; }

 private:
  int& alive_;
};

// Fails to be copied.
class SingleElem : public NullElem {
 public:
  std::unique_ptr<Element> clone() const override { throw Win32Exception("there is but one", 0, "", 0); }
};

class ListElemTest : public testing::Test {
 protected:
  ListElemTest() {
    for (std::int32_t value : {10, 11, 12}) list.addChild(list.getNumChildren(), number(value));
  }

  std::vector<std::string> names() const {
    std::vector<std::string> names;
    for (const auto children = list.iterator(); children->hasNext();) {
      names.push_back(children->next()->getName());
    }
    return names;
  }

  ListElem list;
};

TEST_F(ListElemTest, ChildrenAreNamedByTheirIndexWhateverComesAndGoes) {
  list.addChild(1, number(99));
  EXPECT_EQ(shown(list), "[: 10, : 99, : 11, : 12]");
  EXPECT_THAT(names(), ElementsAre("0", "1", "2", "3"));

  const std::unique_ptr<Element> removed = list.removeChild(0);
  EXPECT_EQ(removed->intValue(), 10);
  EXPECT_EQ(removed->getName(), "");
  EXPECT_EQ(removed->getParent(), nullptr);
  EXPECT_THAT(names(), ElementsAre("0", "1", "2"));
  EXPECT_EQ(list.getChild(0)->getParent(), &list);

  const std::unique_ptr<Element> replaced = list.setChild(1, number(50).release());
  EXPECT_EQ(replaced->intValue(), 11);
  EXPECT_EQ(replaced->getParent(), nullptr);
  EXPECT_EQ(shown(list), "[: 99, : 50, : 12]");
  EXPECT_THAT(names(), ElementsAre("0", "1", "2"));
}

TEST_F(ListElemTest, NamesCountByTheNumberInFront) {
  EXPECT_EQ(list.getChild("1")->intValue(), 11);
  EXPECT_EQ(list.getChild(" 2nd")->intValue(), 12);
  EXPECT_EQ(list.getChild("first")->intValue(), 10);
  EXPECT_EQ(list.addChild("3", number(13)), nullptr);
  EXPECT_EQ(list.setChild("0", number(1).release())->intValue(), 10);
  EXPECT_EQ(list.removeChild("1x")->intValue(), 11);
  EXPECT_EQ(shown(list), "[: 1, : 12, : 13]");
  EXPECT_EQ(failureOf([&] { list.getChild("-1"); }), "ListElem::getChildRaw:4294967295not found");
}

TEST_F(ListElemTest, WhatDoesNotWorkSaysSoAndChangesNothing) {
  IntegerElem free(1);
  expectFailures({
      {"ListElem::addChild: Index 4 out of bound", [&] { list.addChild(4, &free); }},
      {"ListElem::addChild: Index 7 out of bound", [&] { list.addChild("7", &free); }},
      {"ListElem::addChild: No element [87]", [&] { list.addChild(0, nullptr); }},
      {"ListElem::addChild: Element would contain itself [87]", [&] { list.addChild(0, &list); }},
      {"Element::added: Element already added: 3", [&] { list.addChild(3, list.getChild(0)); }},
      {"ListElem::removeChild:3not found", [&] { list.removeChild(3); }},
      {"ListElem::getChildRaw:3not found", [&] { list.getChildRaw(3); }},
      {"ListElem::setChild:3not found", [&] { list.setChild(3, &free); }},
      {"ListElem::setChild: No element [87]", [&] { list.setChild(0, nullptr); }},
      {"Element::added: Element already added: 1", [&] { list.setChild(1, list.getChild(0)); }},
      {"NonterminalElem::stringValue: not supported", [&] { list.stringValue(); }},
      {"NonterminalElem::intValue: not supported", [&] { list.intValue(); }},
      {"NonterminalElem::booleanValue: not supported", [&] { list.booleanValue(); }},
      {"Element::objectValue: not supported", [&] { list.objectValue(); }},
      {"Element::binaryValue: not supported", [&] { list.binaryValue(); }},
      {"Element::binaryLength: not supported", [&] { list.binaryLength(); }},
  });
  EXPECT_EQ(shown(list), "[: 10, : 11, : 12]");
  EXPECT_THAT(names(), ElementsAre("0", "1", "2"));
  EXPECT_EQ(free.getParent(), nullptr);
  EXPECT_EQ(free.getName(), "");
}

TEST_F(ListElemTest, TheIteratorTellsWhereItIs) {
  const auto children = list.iterator();
  EXPECT_EQ(children->nextName(), "0");
  EXPECT_EQ(children->nextRaw(), list.getChild(0));
  EXPECT_EQ(children->nextIndex(), 1u);
  children->next();
  children->next();
  EXPECT_FALSE(children->hasNext());
  EXPECT_EQ(children->nextName(), "3");
  EXPECT_EQ(failureOf([&] { children->nextIndex(); }), "ListElem::nextIndex: end reached");
  EXPECT_EQ(failureOf([&] { children->next(); }), "ListElem::getChildRaw:3not found");
}

class MapElemTest : public testing::Test {
 protected:
  MapElemTest() {
    map.addChild("b", number(2));
    map.addChild("B", number(1));
    map.addChild("\xC3\xA4", number(3));
  }

  MapElem map;
};

TEST_F(MapElemTest, ChildrenStandInTheByteOrderOfTheirNames) {
  map.addChild(7, number(0));
  EXPECT_EQ(shown(map), "{7: 0, B: 1, b: 2, \xC3\xA4: 3}");
  EXPECT_EQ(map.getChild(7)->getName(), "7");
  EXPECT_EQ(map.removeChild(7)->getParent(), nullptr);
  EXPECT_EQ(map.getNumChildren(), 3u);
}

TEST_F(MapElemTest, AChildOfTheSameNameIsDisplacedAndNotTold) {
  const std::unique_ptr<Element> displaced = map.addChild("b", number(22));
  EXPECT_EQ(displaced->intValue(), 2);
  EXPECT_EQ(displaced->getParent(), &map);
  EXPECT_EQ(displaced->getName(), "b");
  EXPECT_EQ(map.getNumChildren(), 3u);
  EXPECT_EQ(map.getChild("b")->intValue(), 22);

  const std::unique_ptr<Element> replaced = map.setChild("b", number(23).release());
  EXPECT_EQ(replaced->intValue(), 22);
  EXPECT_EQ(replaced->getParent(), nullptr);
}

TEST_F(MapElemTest, WhatDoesNotWorkSaysSoAndChangesNothing) {
  IntegerElem free(1);
  expectFailures({
      {"MapElem::getChildRaw:cnot found", [&] { map.getChildRaw("c"); }},
      {"MapElem::getChildRaw:0not found", [&] { map.getChildRaw(0); }},
      {"MapElem::removeChild:cnot found", [&] { map.removeChild("c"); }},
      {"MapElem::setChild:cnot found", [&] { map.setChild("c", &free); }},
      {"MapElem::addChild: No element [87]", [&] { map.addChild("b", nullptr); }},
      {"MapElem::addChild: Element would contain itself [87]", [&] { map.addChild("b", &map); }},
      {"Element::added: Element already added: c", [&] { map.addChild("c", map.getChild("b")); }},
      {"Element::added: Element already added: B", [&] { map.addChild("B", map.getChild("b")); }},
  });
  EXPECT_EQ(shown(map), "{B: 1, b: 2, \xC3\xA4: 3}");
  EXPECT_EQ(free.getParent(), nullptr);
}

TEST_F(MapElemTest, TheIteratorTellsWhereItIs) {
  map.addChild("#1F", number(31));
  const auto children = map.iterator();
  EXPECT_EQ(children->nextName(), "#1F");
  EXPECT_EQ(children->nextIndex(), 31u);
  EXPECT_EQ(children->nextRaw(), map.getChild("#1F"));
  EXPECT_EQ(failureOf([&] { children->nextIndex(); }), "StringToi: illegal format: B");
  while (children->hasNext()) children->next();
  EXPECT_EQ(failureOf([&] { children->next(); }), "MapElem::ElementIteratorImpl.next: end reached");
  EXPECT_EQ(failureOf([&] { children->nextName(); }), "MapElem::ElementIteratorImpl.nextName: end reached");
}

TEST(ElementTree, APathLeadsFromTheRoot) {
  MapElem root;
  root.addChild("list", std::make_unique<ListElem>());
  root.getChild("list")->addChild(0, number(1));
  EXPECT_EQ(root.getPath(), "");
  EXPECT_EQ(root.getChild("list")->getChild(0)->getPath(), ".list.0");
  root.setName("root");
  EXPECT_EQ(root.getChild("list")->getChild(0)->getPath(), "root.list.0");
}

TEST(ElementTree, AnElementIsInOneContainerOnly) {
  ListElem one;
  ListElem other;
  one.addChild(0, number(1));
  EXPECT_EQ(failureOf([&] { other.addChild(0, one.getChild(0)); }),
            "Element::added: Element already added: 0");
  EXPECT_EQ(other.getNumChildren(), 0u);
  one.getChild(0)->removed(&other);
  EXPECT_EQ(one.getChild(0)->getParent(), &one) << "only its own container frees it";
  other.addChild(0, one.removeChild(0));
  EXPECT_EQ(shown(other), "[: 1]");
  one.addChild(0, std::make_unique<ListElem>());
  EXPECT_EQ(failureOf([&] { one.getChild(0)->addChild(0, &one); }),
            "ListElem::addChild: Element would contain itself [87]");
  EXPECT_EQ(shown(one), "[[]]");
}

TEST(ElementTree, ContainersDestroyWhatTheyOwnAndNothingElse) {
  int alive = 0;
  const auto counted = [&] { return std::make_unique<CountedElem>(alive); };
  {
    auto list = std::make_unique<ListElem>();
    list->addChild(0, counted());
    list->addChild(1, counted());
    auto map = std::make_unique<MapElem>();
    map->addChild("list", std::move(list));
    map->addChild("own", counted());
    EXPECT_THROW(map->getChild("list")->addChild(9, counted()), Win32Exception);
    EXPECT_EQ(alive, 3) << "one that was not taken is its owner's";

    std::vector<std::unique_ptr<Element>> taken = map->getChild("list")->removeChildren();
    EXPECT_EQ(map->getChild("list")->getNumChildren(), 0u);
    EXPECT_EQ(taken.front()->getParent(), nullptr);
    taken.pop_back();
    EXPECT_EQ(alive, 2);
    map.reset();
    EXPECT_EQ(alive, 1);
  }
  EXPECT_EQ(alive, 0);
}

TEST(ElementTree, CopiesAreFreeAndWhole) {
  MapElem map;
  map.addChild("n", number(1));
  map.addChild("list", nest(2, std::make_unique<StringElem>("x", "utf-8")));
  const std::string text = shown(map);
  for (const auto& copy : {map.clone(), map.duplicate()}) {
    EXPECT_EQ(shown(*copy), text);
    EXPECT_TRUE(copy->isInstanceOf("MapElem"));
    EXPECT_EQ(copy->getParent(), nullptr);
    EXPECT_EQ(copy->getChild("list")->getChild(0)->getPath(), ".list.0");
    EXPECT_NE(copy->getChild("n"), map.getChild("n"));
    const auto& string = dynamic_cast<StringElem&>(*copy->getChild("list")->getChild(0)->getChild(0));
    EXPECT_EQ(string.encoding(), "utf-8");
  }
}

TEST(ElementTree, CopyToAddsToAContainerOfTheSameClass) {
  ListElem source;
  source.addChild(0, number(1));
  source.addChild(1, number(2));
  ListElem target;
  target.setName("old");
  target.addChild(0, number(3));
  EXPECT_EQ(&source.copyTo(target), &target);
  EXPECT_EQ(shown(target), "[: 1, : 2, : 3]");
  EXPECT_EQ(target.getName(), "");

  source.copyTo(source);
  EXPECT_EQ(shown(source), "[: 1, : 2, : 1, : 2]") << "also into itself";

  MapElem map;
  map.setName("old");
  source.copyTo(map);
  EXPECT_EQ(shown(map), "{}");
  EXPECT_EQ(map.getName(), "");
  map.addChild("a", number(1));
  MapElem other;
  other.addChild("a", number(5));
  map.copyTo(other);
  EXPECT_EQ(shown(other), "{a: 1}");
}

TEST(ElementTree, AChildThatCannotBeCopiedEndsTheCloneOfItsContainerAndFailsADuplicate) {
  ListElem root;
  root.addChild(0, std::make_unique<ListElem>());
  Element& inner = *root.getChild(0);
  inner.addChild(0, number(1));
  inner.addChild(1, std::make_unique<SingleElem>());
  inner.addChild(2, number(2));
  root.addChild(1, number(3));
  EXPECT_EQ(shown(*root.clone()), "[[: 1], : 3]");
  ListElem target;
  root.copyTo(target);
  EXPECT_EQ(shown(target), "[[: 1], : 3]");
  EXPECT_EQ(failureOf([&] { root.duplicate(); }), "there is but one");
}

TEST(ElementTree, ADeepTreeIsCopiedDestroyedAndGrownFromTheRoot) {
  const std::unique_ptr<Element> tree = nest(kDeep, number(1));
  EXPECT_EQ(depthOf(tree.get()), kDeep);
  EXPECT_EQ(depthOf(tree->clone().get()), kDeep);
  EXPECT_EQ(depthOf(tree->duplicate().get()), kDeep);
  ListElem target;
  tree->copyTo(target);
  EXPECT_EQ(depthOf(&target), kDeep);

  MapElem root;
  Element* innermost = &root;
  for (std::size_t level = 0; level < kDeep; ++level) {
    innermost->addChild("x", std::make_unique<MapElem>());
    innermost = innermost->getChild("x");
  }
  EXPECT_EQ(innermost->getPath().size(), 2 * kDeep);
}

}  // namespace
}  // namespace qvn::test
