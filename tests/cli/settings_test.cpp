// What "qvn settings" says of settings that others than the library's table have the defaults of, and of a
// registry that cannot be read.
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "common/logging/log_component.h"
#include "ipv4/base/ip_settings.h"
#include "platform/files/paths.h"
#include "platform/registry/registry.h"
#include "support/process/successful_run.h"
#include "usb1/base/usb_settings.h"

namespace qvn::test {
namespace {

namespace registry = platform::registry;
using nlohmann::json;

TEST(Settings, DefaultsAreThoseOfWhoReadsThem) {
  registry::Key key;
  ASSERT_EQ(registry::createKey(registry::Hive::LocalMachine, kLibraryRegistryRoot, {}, key), 0U);
  ipv4::currentTimeouts();
  ipv4::discoveryTimeout();
  usb1::currentTimeouts();
  usb1::writeSize();
  usb1::readSize();
  usb1::mayDetachKernelDriver();
  std::map<std::string, std::uint32_t> defaults{{"All", log_component::all().getMask()}};
  for (std::size_t i = 0; i < log_component::kCount; ++i) {
    defaults[log_component::at(i).getName()] = log_component::at(i).getMask();
  }
  for (const char* const transport : {ipv4::kSettingsKey, usb1::kSettingsKey}) {
    ASSERT_EQ(
        registry::openKey(registry::Hive::LocalMachine, kLibraryRegistryRoot + std::string(transport), key),
        0U);
    registry::forEachValue(key, [&](std::string_view name, registry::ValueType type, std::string_view data) {
      defaults[std::string(name)] = registry::dwordOf(type, data).value();
    });
  }
  int compared = 0;
  for (const json& setting : json::parse(ok({"settings", "list", "--json"}))) {
    const auto found = defaults.find(setting["name"].get<std::string>());
    if (found == defaults.end()) {
      EXPECT_NE(setting["key"], ipv4::kSettingsKey) << setting;
      continue;
    }
    EXPECT_EQ(setting["default"], found->second) << setting;
    ++compared;
  }
  EXPECT_EQ(compared, 18);
}

TEST(Settings, ADamagedRegistryIsNamed) {
  const std::filesystem::path home = platform::stateDirectory() / "damaged";
  std::filesystem::create_directory(home);
  std::ofstream(home / "registry.mdb") << std::string(100'000, 'x');
  const Result result = run({QVN_COMMAND, "settings", "list"}, "", {{"QVN_HOME", home.string()}});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.errors, testing::HasSubstr((home / "registry.mdb").string() + " is damaged"));
}

}  // namespace
}  // namespace qvn::test
