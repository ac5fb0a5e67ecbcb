// The registry as the library reaches it: keys, stores of settings, and who the library is.
#include <gmock/gmock.h>

#include <functional>

#include "common/settings/application_settings.h"
#include "common/settings/brand_table.h"
#include "common/settings/localize.h"
#include "common/settings/registry_key.h"
#include "platform/base/error.h"
#include "qvn/transport/settings.h"
#include "support/throws.h"

namespace qvn {
namespace {

using test::throwsWin32;
using testing::ElementsAre;

constexpr auto kHive = RegistryKey::kLocalMachine;
const char moduleAddress = 0;

class SettingsTest : public testing::Test {
 protected:
  SettingsTest() { Localize::createInstance(&moduleAddress); }
  ~SettingsTest() override { Localize::destroyInstance(); }

  RegistryKey settingsKey() {
    return RegistryKey(std::string(kLibraryRegistryRoot) + "Settings\\", true, kHive);
  }
};

TEST(Localize, SaysWhenItIsAskedTooEarly) {
  EXPECT_THAT([] { Localize::getInstance(); },
              testing::Throws<const char*>(
                  testing::StrEq("You must call Localize::createInstance() before calling getInstance()")));
}

TEST_F(SettingsTest, TheModulesFileNameLeadsToTheRegistryRoots) {
  const Localize& localize = Localize::getInstance();
  EXPECT_EQ(localize.getLocalId(), "qr__");
  EXPECT_EQ(localize.getRegistryRoot(0), kLibraryRegistryRoot);
  EXPECT_EQ(localize.getRegistryRoot(1), "Software\\Quorin Tools\\Qvn\\Shared\\");
  EXPECT_EQ(localize.getRegistryRoot(2), "Software\\QuorinTemp\\temp");
  EXPECT_TRUE(localize.isFamilyEntry());
  EXPECT_EQ(findBrand("QR"), findBrand("qr"));
  EXPECT_EQ(findBrand("zz"), nullptr);
}

// The library and its transports read alike.
TEST_F(SettingsTest, ReadingWritesTheDefaultBelowAnExistingRootOnly) {
  const std::function<std::uint32_t()> readers[] = {
      [] { return longSetting(setting::kTeojInterval); },
      [] { return transportSetting("Settings\\", "TeojInterval", 1000); }};
  for (const auto& read : readers) {
    EXPECT_EQ(read(), 1000u);
    EXPECT_FALSE(ApplicationSettings().isAvailable()) << "a store never makes its own root";
    ApplicationSettings settings;
    EXPECT_EQ(settings.create(), 0u);
    EXPECT_EQ(read(), 1000u);
    std::uint32_t value = 0;
    EXPECT_TRUE(settingsKey().getValue("teojinterval", value));
    EXPECT_EQ(value, 1000u);
    settings.setLong("Settings\\", "TeojInterval", 20, 0);
    EXPECT_EQ(read(), 20u);
    settings.setString("Settings\\", "TeojInterval", "soon", 0);
    platform::setLastError(99);
    EXPECT_EQ(read(), 1000u) << "of another type";
    EXPECT_EQ(platform::lastError(), 0u);
    RegistryKey::deleteTree("Software\\Quorin Tools", kHive);
  }
  std::uint32_t value = 1;
  EXPECT_FALSE(ApplicationSettings().getLongOrDefault("Settings\\", "TeojInterval", value, 1000, 0));
  EXPECT_EQ(value, 1u);
}

TEST_F(SettingsTest, AKeySaysWhatIsWrong) {
  settingsKey().setValue("text", std::string("soon"));
  std::uint32_t value = 0;
  EXPECT_THAT([&] { settingsKey().getValue("text", value); },
              throwsWin32("RegistryKey::getValue(ulong)text : incorrect value type", 0));
  EXPECT_THAT([] { RegistryKey("Software\\Nowhere", false, kHive); },
              throwsWin32("RegistryKey::openKey()", 2));
  EXPECT_THAT([] { RegistryKey("Software\\Nowhere", false, kHive); },
              testing::Throws<Win32Exception>(
                  testing::Property(&Win32Exception::describe, testing::StartsWith("file:RegistryKey:"))));
  const RegistryKey deleted = settingsKey();
  RegistryKey::deleteTree(std::string(kLibraryRegistryRoot), kHive);
  Data binary;
  EXPECT_FALSE(deleted.getValue("text", binary)) << "binary values only";
  EXPECT_THAT([&] { deleted.getValue("text", value); },
              throwsWin32("RegistryKey::getValue(ulong)text", 1018));
}

TEST_F(SettingsTest, EveryTypeIsWrittenAndReadBack) {
  ApplicationSettings settings;
  settings.create();
  Data binary;
  EXPECT_TRUE(settings.getBinaryOrDefault("Settings\\", "B", binary, Data("\1\2\3", 3), 0));
  Data again;
  EXPECT_TRUE(settings.getBinary("Settings\\", "B", again, 0));
  EXPECT_EQ(again.getLength(), 3u);
  std::string text;
  EXPECT_TRUE(settings.getStringOrDefault("Settings\\", "S", text, "d", 1));
  EXPECT_TRUE(settings.getString("Settings\\", "S", text, 1));
  EXPECT_EQ(text, "d");
  EXPECT_FALSE(settings.getString("Settings\\", "S", text, 0)) << "the shared branch is another";
  EXPECT_FALSE(settings.getString("Settings\\", "absent", text, 1));
  std::vector<std::string> names;
  EXPECT_TRUE(settings.getValueNames("Settings\\", names, 0));
  EXPECT_THAT(names, ElementsAre("B"));
  EXPECT_TRUE(settings.deleteValue("Settings\\", "B", 0));
  EXPECT_TRUE(settings.deleteValue("Settings\\", "B", 0)) << "an absent value is no failure";
  EXPECT_FALSE(settings.deleteValue("Nowhere\\", "B", 0));
  EXPECT_EQ(platform::lastError(), 2u);
  EXPECT_THROW(settings.deleteKey("Nowhere\\", 0), Win32Exception);
  EXPECT_TRUE(settings.deleteKey("Settings\\", 0));
  EXPECT_FALSE(settings.getValueNames("Settings\\", names, 0));
}

TEST_F(SettingsTest, RemoveAllKeepsTheRootWhileAnotherModuleHasABranch) {
  SettingsStore one("Software\\Test\\", "one");
  SettingsStore two("Software\\Test\\", "two");
  std::string path;
  one.fullPath(path, 0);
  EXPECT_EQ(path, "Software\\Test\\Local\\one");
  one.fullPath(path, 1);
  EXPECT_EQ(path, "Software\\Test\\Shared\\");
  one.setLong("\\Settings", "x", 1, 0);
  two.setLong("\\Settings", "x", 1, 0);
  EXPECT_FALSE(one.removeAll());
  EXPECT_NO_THROW(RegistryKey("Software\\Test\\Local\\two\\Settings", false, kHive));
  EXPECT_TRUE(two.removeAll());
  EXPECT_THROW(RegistryKey("Software\\Test", false, kHive), Win32Exception);
}

TEST(RegistryKey, RecursiveDeletionEmptiesAKeyNamedSoftwareAndKeepsIt) {
  for (const char* const path : {"Software\\A\\software\\B", "Software\\A\\C\\D", "Other\\A"})
    RegistryKey(path, true, kHive);
  RegistryKey root("Other", false, kHive);
  root.recurseDeleteKey("absent");
  RegistryKey::deleteTree("Software\\A\\", kHive);
  EXPECT_THAT(RegistryKey("SOFTWARE", false, kHive).getChildrenNames(9), ElementsAre());
  RegistryKey(std::string("Other\\sOftware\\X"), true, kHive);
  root.recurseDeleteKey("SOFTWARE");
  EXPECT_THAT(RegistryKey("Other\\Software", false, kHive).getChildrenNames(9), ElementsAre());
  EXPECT_THAT(root.getChildrenNames(9), ElementsAre("A", "sOftware"));
  RegistryKey::deleteTree("Other", kHive);
  EXPECT_THROW(RegistryKey("Other", false, kHive), Win32Exception);
  RegistryKey::deleteTree("", kHive);
  EXPECT_NO_THROW(RegistryKey("Software", false, kHive));
}

TEST_F(SettingsTest, SupportedDevicesAndTheDefaultModel) {
  ApplicationSettings settings;
  EXPECT_EQ(settings.isSupportedDevice("Model X"), 1168u);
  settings.setLong("Runtime\\SupportedDevices\\", "MODEL X", 1, 0);
  settings.setLong("Runtime\\SupportedDevices\\", "MODEL Y", 0, 0);
  EXPECT_EQ(settings.isSupportedDevice("Model X"), 0u);
  EXPECT_EQ(settings.isSupportedDevice("Model Y"), 1168u);

  Localize& localize = Localize::getInstance();
  EXPECT_EQ(localize.getDefaultModelId(), 0u);
  EXPECT_THROW(localize.getDefaultModelName(), Win32Exception);
  settings.setLong("Runtime", "DefaultModelId", 0x12345678, 0);
  settings.setString("Runtime", "DefaultModelName", "Model_X", 0);
  EXPECT_EQ(localize.getDefaultModelId(), 0x12345678u);
  EXPECT_EQ(localize.getDefaultModelName(), "Model_X");
}

}  // namespace
}  // namespace qvn
