// Keys, values, their order and the result codes.
#include <gmock/gmock.h>
#include <unistd.h>

#include <stdexcept>
#include <tuple>

#include "platform/registry/keys.h"
#include "support/process/forked.h"

namespace qvn::platform::registry {
namespace {

using testing::ElementsAre;

constexpr std::string_view kOne("\1\0\0\0", 4);

ErrorCode open(std::string_view path) {
  Key key;
  return openKey(Hive::LocalMachine, path, key);
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
  EXPECT_EQ(setString(made("Software\\Brand\\Qvn"), "Which", "this one"), kSuccess);
  for (const char* const spelling : {"Software\\Brand\\Qvn", "SOFTWARE\\brand\\QVN",
                                     "\\Software\\Brand\\Qvn\\", "Software\\\\Brand\\Qvn\\\\"}) {
    Key key;
    ASSERT_EQ(openKey(Hive::LocalMachine, spelling, key), kSuccess) << spelling;
    EXPECT_EQ(stringOf(key, "wHICH"), "this one") << spelling;
  }
}

TEST(Registry, NamesKeepTheCaseTheyWereFirstWrittenWith) {
  made("Software\\MixedCase");
  const Key parent = made("SOFTWARE");
  made("software\\MIXEDCASE");
  EXPECT_THAT(subkeys(parent), ElementsAre("MixedCase"));
  EXPECT_EQ(setString(parent, "ValueName", "first"), kSuccess);
  EXPECT_EQ(setString(parent, "VALUENAME", "second"), kSuccess);
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
  made("Present\\" + longest);
  made(deep);
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
  const Key parent = made("List");
  for (const char* const name : {"b", "a\\deep\\deeper", "A-b", "a0\\x", "C", "ab", "_", "\xC3\xA4"}) {
    made(std::string("List\\") + name);
  }
  made("List2");
  EXPECT_THAT(subkeys(parent), ElementsAre("_", "a", "A-b", "a0", "ab", "b", "C", "\xC3\xA4"));
  EXPECT_THAT(subkeys(parent, 3), ElementsAre("_", "a", "A-b"));
  EXPECT_THAT(subkeys(parent, 0), ElementsAre());
  EXPECT_THAT(subkeys(made("List\\a")), ElementsAre("deep"));
}

TEST(Registry, ValuesListInTheOrderTheyWereFirstWritten) {
  const Key key = made("Values");
  for (const char* const name : {"zebra", "apple", "mango", "kiwi"})
    EXPECT_EQ(setString(key, name, name), kSuccess);
  EXPECT_EQ(setString(key, "apple", "written again"), kSuccess);
  ASSERT_EQ(deleteValue(key, "ZEBRA"), kSuccess);
  EXPECT_EQ(setString(key, "zebra", "new"), kSuccess);
  EXPECT_THAT(valueNames(key), ElementsAre("apple", "mango", "kiwi", "zebra"));
}

TEST(Registry, ValuesComeBackWithTypeAndBytes) {
  const Key key = made("Types");
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
  const Key key = made("Refused");
  const Key closed;
  Value value;
  const std::string overlong(kMaxName + 1, 'n');
  const struct {
    const Key& key;
    std::string name;
    ValueType type;
    ErrorCode set;
    ErrorCode get;
    ErrorCode remove;
  } cases[] = {
      {key, "", ValueType::String, kInvalidParameter, kInvalidParameter, kInvalidParameter},
      {key, overlong, ValueType::String, kInvalidParameter, kInvalidParameter, kInvalidParameter},
      {key, "number", ValueType::Dword, kInvalidParameter, kFileNotFound, kFileNotFound},
      {key, "type", ValueType{2}, kInvalidParameter, kFileNotFound, kFileNotFound},
      {closed, "x", ValueType::String, kInvalidHandle, kInvalidHandle, kInvalidHandle},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(setValue(c.key, c.name, c.type, "x"), c.set) << c.name;
    EXPECT_EQ(getValue(c.key, c.name, value), c.get) << c.name;
    EXPECT_EQ(deleteValue(c.key, c.name), c.remove) << c.name;
  }
  EXPECT_EQ(deleteKey(closed, "x"), kInvalidHandle);
  EXPECT_THAT(valueNames(key), ElementsAre());
}

TEST(Registry, OnlyAKeyWithoutSubkeysIsDeleted) {
  const Key root = made("Tree");
  EXPECT_EQ(setString(made("Tree\\a\\b"), "value", "x"), kSuccess);
  EXPECT_EQ(setString(made("Tree\\a-b"), "value", "kept"), kSuccess);
  EXPECT_EQ(deleteKey(root, "a"), kKeyHasChildren);
  EXPECT_EQ(deleteKey(root, ""), kInvalidParameter);
  EXPECT_EQ(deleteKey(root, "missing"), kFileNotFound);
  EXPECT_EQ(deleteKey(root, "A\\B"), kSuccess);
  EXPECT_EQ(deleteKey(root, "a"), kSuccess);
  EXPECT_THAT(subkeys(root), ElementsAre("a-b"));
  EXPECT_EQ(stringOf(made("Tree\\a-b"), "value"), "kept");
}

TEST(Registry, ADeletedKeyAnswersSoEvenWhenItsPathIsUsedAgain) {
  const Key parent = made("Deleted");
  const Key key = made("Deleted\\key");
  EXPECT_EQ(setString(key, "value", "old"), kSuccess);
  ASSERT_EQ(deleteKey(parent, "key"), kSuccess);
  const Key again = made("Deleted\\key");
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
  EXPECT_EQ(setString(made("Parent\\Child\\Grandchild"), "value", "found"), kSuccess);
  const Key parent = made("Parent");
  Key key;
  ASSERT_EQ(openSubkey(parent, "child\\GRANDCHILD", key), kSuccess);
  EXPECT_EQ(stringOf(key, "value"), "found");
  EXPECT_EQ(openSubkey(parent, "missing", key), kFileNotFound);
  EXPECT_EQ(openSubkey(parent, std::string(kMaxPath, 'a'), key), kInvalidParameter);
}

TEST(Registry, ATransactionTakesEffectWhollyOrNotAtAll) {
  const Key key = made("Transaction");
  EXPECT_EQ(setString(key, "value", "before"), kSuccess);
  const auto change = [&] {
    EXPECT_EQ(setString(key, "value", "inside"), kSuccess);
    made("Transaction\\made");
    EXPECT_EQ(stringOf(key, "value"), "inside");
    EXPECT_EQ(transaction([&] { return setString(key, "nested", "inside"); }), kSuccess);
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
  Value nested;
  EXPECT_EQ(getValue(key, "nested", nested), kFileNotFound);
  EXPECT_THAT(subkeys(key), ElementsAre());
  EXPECT_EQ(transaction([&] {
              change();
              return kSuccess;
            }),
            kSuccess);
  EXPECT_EQ(stringOf(key, "value"), "inside");
  EXPECT_EQ(stringOf(key, "nested"), "inside");
  EXPECT_THAT(subkeys(key), ElementsAre("made"));
}

TEST(Registry, AReaderThatReadsFurtherSeesTheSameKinds) {
  const Key key = made("Nested");
  EXPECT_EQ(setString(key, "outer", "1"), kSuccess);
  EXPECT_EQ(setString(key, "inner", "2"), kSuccess);
  std::string inner;
  EXPECT_EQ(readValue(key, "outer", [&](ValueType, std::string_view) { inner = stringOf(key, "inner"); }),
            kSuccess);
  EXPECT_EQ(inner, "2");
}

TEST(Registry, AKeyOpensOnlyToThoseItWasMadeFor) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root, to become another account";
  made("Open");
  const auto makeOwn = [](std::string_view path) {
    Key key;
    EXPECT_EQ(createKey(Hive::LocalMachine, path, Access{}, key), kSuccess) << path;
  };
  makeOwn("Open\\Inherits");
  makeOwn("Private");
  made("Private\\Open");
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
