// Keys, values, their order and the result codes.
#include "platform/registry/registry.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <stdexcept>
#include <tuple>

#include "support/process/forked.h"

namespace qvn::platform::registry {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

constexpr Access kEveryone{.everyone = true, .inheritable = true};
constexpr std::string_view kOne("\1\0\0\0", 4);

Key make(std::string_view path, Access access = kEveryone) {
  Key key;
  EXPECT_EQ(createKey(Hive::LocalMachine, path, access, key), kSuccess) << path;
  return key;
}

ErrorCode open(std::string_view path) {
  Key key;
  return openKey(Hive::LocalMachine, path, key);
}

std::string stringOf(const Key& key, std::string_view name) {
  Value value;
  EXPECT_EQ(getValue(key, name, value), kSuccess) << name;
  EXPECT_EQ(value.type, ValueType::String);
  return value.data;
}

void setString(const Key& key, std::string_view name, std::string_view text) {
  EXPECT_EQ(setValue(key, name, ValueType::String, text), kSuccess) << name;
}

std::vector<std::string> valueNames(const Key& key) {
  std::vector<std::string> names;
  EXPECT_EQ(forEachValue(
                key, [&](std::string_view name, ValueType, std::string_view) { names.emplace_back(name); }),
            kSuccess);
  return names;
}

std::vector<std::string> subkeys(const Key& key, std::size_t limit = 1000) {
  std::vector<std::string> names;
  EXPECT_EQ(listSubkeys(key, limit, names), kSuccess);
  return names;
}

TEST(Registry, AllSpellingsOfAPathOpenOneKey) {
  setString(make("Software\\Brand\\Qvn"), "Which", "this one");
  for (const char* const spelling : {"Software\\Brand\\Qvn", "SOFTWARE\\brand\\QVN",
                                     "\\Software\\Brand\\Qvn\\", "Software\\\\Brand\\Qvn\\\\"}) {
    Key key;
    ASSERT_EQ(openKey(Hive::LocalMachine, spelling, key), kSuccess) << spelling;
    EXPECT_EQ(stringOf(key, "wHICH"), "this one") << spelling;
  }
}

TEST(Registry, NamesKeepTheCaseTheyWereFirstWrittenWith) {
  make("Software\\MixedCase");
  const Key parent = make("SOFTWARE");
  make("software\\MIXEDCASE");
  EXPECT_THAT(subkeys(parent), ElementsAre("MixedCase"));
  setString(parent, "ValueName", "first");
  setString(parent, "VALUENAME", "second");
  EXPECT_THAT(valueNames(parent), ElementsAre("ValueName"));
  EXPECT_EQ(stringOf(parent, "valuename"), "second");
}

TEST(Registry, PathsThatNameNoKeyAreToldApart) {
  const std::string longest(kMaxName, 'n');
  const std::string deep = [] {
    std::string path;
    while (path.size() + 3 <= kMaxPath) path += "ab\\";
    return path;
  }();
  make("Present\\" + longest);
  make(deep);
  const std::vector<std::tuple<std::string, ErrorCode>> cases = {
      {"Present", kSuccess},
      {"", kSuccess},  // the root
      {"Presen", kFileNotFound},
      {"Present\\Missing", kFileNotFound},
      {"Missing\\Present", kFileNotFound},
      {"Present\\" + longest, kSuccess},
      {"Present\\" + longest + "n", kInvalidParameter},
      {std::string("Pre\0sent", 8), kInvalidParameter},
      {deep, kSuccess},
      {deep + "ab", kNameTooLong},
  };
  for (const auto& [path, code] : cases) EXPECT_EQ(open(path), code) << path;
  Key key;
  EXPECT_EQ(createKey(Hive::LocalMachine, deep + "ab\\x", kEveryone, key), kNameTooLong);
  EXPECT_EQ(lastError(), kNameTooLong);
  EXPECT_FALSE(key.isOpen());
}

TEST(Registry, SubkeysListInByteOrderOfTheirLowerCasedNames) {
  const Key parent = make("List");
  for (const char* const name : {"b", "a\\deep\\deeper", "A-b", "a0\\x", "C", "ab", "_", "\xC3\xA4"}) {
    make(std::string("List\\") + name);
  }
  make("List2");
  EXPECT_THAT(subkeys(parent), ElementsAre("_", "a", "A-b", "a0", "ab", "b", "C", "\xC3\xA4"));
  EXPECT_THAT(subkeys(parent, 3), ElementsAre("_", "a", "A-b"));
  EXPECT_THAT(subkeys(parent, 0), ElementsAre());
  EXPECT_THAT(subkeys(make("List\\a")), ElementsAre("deep"));
}

TEST(Registry, TheListOfSubkeysEndsAtItsLimit) {
  const Key parent = make("Many");
  std::vector<std::string> expected;
  ASSERT_EQ(transaction([&] {
              for (int i = 1000; i < 1150; ++i) make("Many\\" + std::to_string(i));
              return kSuccess;
            }),
            kSuccess);
  for (int i = 1000; i < 1100; ++i) expected.push_back(std::to_string(i));
  EXPECT_THAT(subkeys(parent, 100), ElementsAreArray(expected));
}

TEST(Registry, ValuesListInTheOrderTheyWereFirstWritten) {
  const Key key = make("Values");
  for (const char* const name : {"zebra", "apple", "mango", "kiwi"}) setString(key, name, name);
  setString(key, "apple", "written again");
  ASSERT_EQ(deleteValue(key, "ZEBRA"), kSuccess);
  setString(key, "zebra", "new");
  EXPECT_THAT(valueNames(key), ElementsAre("apple", "mango", "kiwi", "zebra"));
}

TEST(Registry, ValuesComeBackWithTypeAndBytes) {
  const Key key = make("Types");
  const std::vector<std::tuple<std::string, ValueType, std::string>> cases = {
      {"text", ValueType::String, "some text"},
      {"empty text", ValueType::String, ""},
      {"number", ValueType::Dword, {"\1\2\3\4"}},
      {"bytes", ValueType::Binary, std::string("\0\1\0", 3)},
      {"no bytes", ValueType::Binary, ""},
      {"pages", ValueType::Binary, std::string(100'000, 'p')},
      {std::string(kMaxName, 'n'), ValueType::String, "x"},
  };
  for (const auto& [name, type, data] : cases) ASSERT_EQ(setValue(key, name, type, data), kSuccess) << name;
  for (const auto& [name, type, data] : cases) {
    Value value;
    ASSERT_EQ(getValue(key, name, value), kSuccess) << name;
    EXPECT_EQ(value.type, type) << name;
    EXPECT_EQ(value.data, data) << name;
  }
}

TEST(Registry, ImpossibleValuesAreRefused) {
  const Key key = make("Refused");
  const Key closed;
  Value value;
  const std::string overlong(kMaxName + 1, 'n');
  EXPECT_EQ(setValue(key, "", ValueType::String, "x"), kInvalidParameter);
  EXPECT_EQ(setValue(key, overlong, ValueType::String, "x"), kInvalidParameter);
  EXPECT_EQ(setValue(key, "number", ValueType::Dword, "x"), kInvalidParameter);
  EXPECT_EQ(setValue(key, "type", ValueType{2}, "x"), kInvalidParameter);
  EXPECT_EQ(getValue(key, overlong, value), kInvalidParameter);
  EXPECT_EQ(getValue(key, "missing", value), kFileNotFound);
  EXPECT_EQ(deleteValue(key, "missing"), kFileNotFound);
  EXPECT_EQ(getValue(closed, "x", value), kInvalidHandle);
  EXPECT_EQ(setValue(closed, "x", ValueType::String, "x"), kInvalidHandle);
  EXPECT_EQ(deleteKey(closed, "x"), kInvalidHandle);
  EXPECT_THAT(valueNames(key), ElementsAre());
}

TEST(Registry, OnlyAKeyWithoutSubkeysIsDeleted) {
  const Key root = make("Tree");
  setString(make("Tree\\a\\b"), "value", "x");
  setString(make("Tree\\a-b"), "value", "kept");
  EXPECT_EQ(deleteKey(root, "a"), kKeyHasChildren);
  EXPECT_EQ(deleteKey(root, ""), kInvalidParameter);
  EXPECT_EQ(deleteKey(root, "missing"), kFileNotFound);
  EXPECT_EQ(deleteKey(root, "A\\B"), kSuccess);
  EXPECT_EQ(deleteKey(root, "a"), kSuccess);
  EXPECT_THAT(subkeys(root), ElementsAre("a-b"));
  EXPECT_EQ(stringOf(make("Tree\\a-b"), "value"), "kept");
}

TEST(Registry, ADeletedKeyAnswersSoEvenWhenItsPathIsUsedAgain) {
  const Key parent = make("Deleted");
  const Key key = make("Deleted\\key");
  setString(key, "value", "old");
  ASSERT_EQ(deleteKey(parent, "key"), kSuccess);
  const Key again = make("Deleted\\key");
  EXPECT_THAT(valueNames(again), ElementsAre());

  Value value;
  Key other;
  std::vector<std::string> names;
  const auto ignore = [](std::string_view, ValueType, std::string_view) {};
  EXPECT_EQ(getValue(key, "value", value), kKeyDeleted);
  EXPECT_EQ(setValue(key, "value", ValueType::Dword, kOne), kKeyDeleted);
  EXPECT_EQ(deleteValue(key, "value"), kKeyDeleted);
  EXPECT_EQ(listSubkeys(key, 10, names), kKeyDeleted);
  EXPECT_EQ(forEachValue(key, ignore), kKeyDeleted);
  EXPECT_EQ(openSubkey(key, "x", other), kKeyDeleted);
  EXPECT_EQ(deleteKey(key, "x"), kKeyDeleted);
}

TEST(Registry, SubkeysOpenRelativeToTheirParent) {
  setString(make("Parent\\Child\\Grandchild"), "value", "found");
  const Key parent = make("Parent");
  Key key;
  ASSERT_EQ(openSubkey(parent, "child\\GRANDCHILD", key), kSuccess);
  EXPECT_EQ(stringOf(key, "value"), "found");
  EXPECT_EQ(openSubkey(parent, "missing", key), kFileNotFound);
  EXPECT_EQ(openSubkey(parent, std::string(kMaxPath, 'a'), key), kInvalidParameter);
}

TEST(Registry, ATransactionTakesEffectWhollyOrNotAtAll) {
  const Key key = make("Transaction");
  setString(key, "value", "before");
  const auto change = [&] {
    setString(key, "value", "inside");
    make("Transaction\\made");
    EXPECT_EQ(stringOf(key, "value"), "inside");
    EXPECT_EQ(transaction([] { return kSuccess; }), kInvalidParameter) << "nested";
  };
  EXPECT_EQ(transaction([&] {
              change();
              return ErrorCode{1234};
            }),
            1234U);
  EXPECT_THROW(static_cast<void>(transaction([&]() -> ErrorCode {
                 change();
                 throw std::runtime_error("stop");
               })),
               std::runtime_error);
  EXPECT_EQ(stringOf(key, "value"), "before");
  EXPECT_THAT(subkeys(key), ElementsAre());
  EXPECT_EQ(transaction([&] {
              change();
              return kSuccess;
            }),
            kSuccess);
  EXPECT_EQ(stringOf(key, "value"), "inside");
  EXPECT_THAT(subkeys(key), ElementsAre("made"));
}

TEST(Registry, AReaderThatReadsFurtherSeesTheSameKinds) {
  const Key key = make("Nested");
  setString(key, "outer", "1");
  setString(key, "inner", "2");
  std::string inner;
  EXPECT_EQ(readValue(key, "outer", [&](ValueType, std::string_view) { inner = stringOf(key, "inner"); }),
            kSuccess);
  EXPECT_EQ(inner, "2");
}

TEST(Registry, AKeyOpensOnlyToThoseItWasMadeFor) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root, to become another account";
  make("Open");
  make("Open\\Inherits", Access{});
  make("Private", Access{});
  make("Private\\Open", kEveryone);
  constexpr uid_t kAnotherAccount = 65534;
  test::Forked other([] {
    if (open("Open") != kSuccess || seteuid(kAnotherAccount) != 0) return 1;
    Key key;
    if (open("Open\\Inherits") != kSuccess) return 2;
    if (open("Private") != kAccessDenied) return 3;
    if (createKey(Hive::LocalMachine, "Private\\New", kEveryone, key) != kAccessDenied) return 4;
    if (open("Private\\Open") != kSuccess) return 5;
    return 0;
  });
  EXPECT_EQ(other.wait(), 0);
}

}  // namespace
}  // namespace qvn::platform::registry
