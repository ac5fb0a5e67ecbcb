#include "shared/registry-script/registry_script.h"

#include <gmock/gmock.h>

namespace qvn {
namespace {

namespace registry = platform::registry;

void apply(const std::string& script) {
  std::size_t line = 0;
  ASSERT_EQ(applyRegistryChanges(parseRegistryScript(script), line), 0u) << "line " << line << " of\n"
                                                                         << script;
}

std::string written(const std::string& key) {
  std::string text;
  EXPECT_EQ(writeRegistryScript(key, text), 0u) << key;
  return text;
}

// Some tests look at everything that there is.
class RegistryScript : public testing::Test {
 protected:
  void SetUp() override { apply("[-Software]"); }
};

TEST_F(RegistryScript, ReadsEveryFormOfLine) {
  apply(
      "\xEF\xBB\xBF# saved\r\n"
      "\r\n"
      "[Software\\Brand]\r\n"
      "  \"text\" = \"a \\\"b\\\" \\\\ \\n\\r\\t\\xff\xC3\xA4\"  \r\n"
      "\"number\"=dword:a\n"
      "\"bytes\"=hex:01, AB,ff\n"
      "\"nothing\"=hex:\n"
      "\"gone\"=-\n"
      "\"kept\" ?= dword:1\n"
      "[-Software\\Old]");
  EXPECT_EQ(written("Software"),
            "[Software]\n\n[Software\\Brand]\n"
            "\"text\"=\"a \\\"b\\\" \\\\ \\x0a\\x0d\\x09\\xff\xC3\xA4\"\n"
            "\"number\"=dword:0000000a\n\"bytes\"=hex:01,ab,ff\n\"nothing\"=hex:\n\"kept\"=dword:00000001\n");
}

TEST_F(RegistryScript, NamesTheFirstWrongLine) {
  const struct {
    std::string script;
    std::string message;
  } cases[] = {
      {"\"a\"=\"b\"", "line 1: a value stands below its key"},
      {"[K]\n[-K]\n\"a\"=\"b\"", "line 3: a value stands below its key"},
      {"[K", "line 1: the closing bracket"},
      {"[K] x", "line 1: nothing may follow the closing bracket"},
      {"[HKEY_LOCAL_MACHINE\\Software]", "line 1: a key is named from below the root"},
      {"[-hkey_users]", "line 1: a key is named from below the root"},
      {"[]", "line 1: a key is one or more names"},
      {"[\\K]", "line 1: a key is one or more names"},
      {"[K\\\\L]", "line 1: a key is one or more names"},
      {"[" + std::string(registry::kMaxPath + 1, 'k') + "]", "line 1: a key's path has at most"},
      {"[K]\n\na=\"b\"", "line 3: a text in double quotes"},
      {"[K]\n\"\"=\"b\"", "line 2: a value's name has"},
      {"[K]\n\"" + std::string(registry::kMaxName + 1, 'n') + "\"=\"\"", "line 2: a value's name has"},
      {"[K]\n\"a\"", "line 2: an equals sign"},
      {"[K]\n\"a\"=", "line 2: a text in double quotes"},
      {"[K]\n\"a\"=\"b", "line 2: the closing double quote"},
      {"[K]\n\"a\"=\"b\\", "line 2: a backslash is followed by"},
      {"[K]\n\"a\"=\"\\q\"", "line 2: a backslash is followed by"},
      {"[K]\n\"a\"=\"\\x4\"", "line 2: \\x is followed by"},
      {"[K]\n\"a\"=\"b\" # c", "line 2: nothing may follow the value"},
      {"[K]\n\"a\"=- ;", "line 2: nothing may follow the value"},
      {"[K]\n\"a\"?\"b\"", "line 2: an equals sign"},
      {"[K]\n\"a\"?=-", "line 2: a text in double quotes"},
      {"[K]\n\"a\"=dword:", "line 2: dword: is followed by"},
      {"[K]\n\"a\"=dword:123456789", "line 2: dword: is followed by"},
      {"[K]\n\"a\"=dword:-1", "line 2: dword: is followed by"},
      {"[K]\n\"a\"=hex:1", "line 2: hex: is followed by"},
      {"[K]\n\"a\"=hex:01,", "line 2: hex: is followed by"},
      {"[K]\n\"a\"=hex:0102", "line 2: the bytes after hex:"},
      {"[K]\n\"a\"=\"\xC3\"", "line 2: this is not UTF-8"},
      {"[K]\n\"a\"=\"\xED\xA0\x80\"", "line 2: this is not UTF-8"},
      {"# \xFF", "line 1: this is not UTF-8"},
      {"[K]\n\"a\"=word:1", "line 2: a text in double quotes"},
  };
  for (const auto& [script, message] : cases) {
    try {
      parseRegistryScript(script);
      ADD_FAILURE() << "accepted: " << script;
    } catch (const RegistryScriptError& error) {
      EXPECT_THAT(error.what(), testing::HasSubstr(message)) << script;
    }
  }
}

TEST_F(RegistryScript, WritesWhatItReads) {
  const std::string script =
      "[Software\\Brand]\n"
      "\n"
      "[Software\\Brand\\A key]\n"
      "\"z\"=\"quote \\\" backslash \\\\ \\x0d\\x0a\\x00 \xC3\xA4 \\xff\"\n"
      "\"a\"=dword:fffffffe\n"
      "\"empty\"=\"\"\n"
      "\n"
      "[Software\\Brand\\A key\\Below]\n"
      "\"odd \\\"name\\\"\"=hex:00,01,ff\n"
      "\"none\"=hex:\n";
  apply(script);
  EXPECT_EQ(written("Software\\Brand"), script);

  apply("[-Software\\Brand]\n" + script);
  EXPECT_EQ(written("Software\\Brand"), script);
}

TEST_F(RegistryScript, DeletesValuesAndTreesAndMindsNoneThatAreMissing) {
  apply("[Software\\Brand]\n\"keep\"=\"1\"\n\"drop\"=\"2\"\n[Software\\Brand\\Sub\\Deep]\n\"x\"=\"y\"\n");
  apply("[Software\\Brand]\n\"drop\"=-\n\"never\"=-\n[-Software\\Brand\\Sub]\n[-Software\\Brand\\Other]\n");
  EXPECT_EQ(written("Software\\Brand"), "[Software\\Brand]\n\"keep\"=\"1\"\n");
  apply("[-Software]");
  std::string text;
  EXPECT_EQ(writeRegistryScript("Software", text), platform::kFileNotFound);
}

TEST_F(RegistryScript, SetsAMissingValueAndKeepsOneOfAnyType) {
  apply("[Software\\Brand]\n\"a\"=hex:01\n\"b\"=\"\"\n");
  apply("[Software\\Brand]\n\"a\"?=\"x\"\n\"b\"?=dword:1\n\"c\"?=\"y\"\n\"c\"?=\"z\"\n");
  EXPECT_EQ(written("Software\\Brand"), "[Software\\Brand]\n\"a\"=hex:01\n\"b\"=\"\"\n\"c\"=\"y\"\n");
}

TEST_F(RegistryScript, ChangesNothingWhenOneChangeFails) {
  apply("[Software\\Brand]\n\"a\"=\"old\"\n");
  const std::string name(registry::kMaxName, 'k');
  // Each part of the path fits, the whole does not.
  std::vector<RegistryChange> changes =
      parseRegistryScript("[Software\\Brand]\n\"a\"=\"new\"\n[Software\\New]\n");
  changes.push_back({RegistryChange::Kind::CreateKey, 4, name + "\\" + name + "\\" + name, {}, {}});
  std::size_t line = 0;
  EXPECT_EQ(applyRegistryChanges(changes, line), platform::kNameTooLong);
  EXPECT_EQ(line, 4u);
  EXPECT_EQ(written("Software"), "[Software]\n\n[Software\\Brand]\n\"a\"=\"old\"\n");
}

}  // namespace
}  // namespace qvn
