// What another account of the group may have put into the state directory.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>

#include "platform/files/file.h"
#include "platform/files/paths.h"
#include "platform/registry/keys.h"
#include "platform/threads/event.h"
#include "support/content_of.h"

namespace qvn::platform {
namespace {

namespace fs = std::filesystem;

constexpr Access kEveryone{.everyone = true};

ErrorCode append(const char* path) {
  ErrorCode error = kSuccess;
  const auto file = File::open(path, File::Open::CreateIfMissing, kEveryone, error);
  if (file == nullptr) return error;
  file->seekToEnd();
  return file->write("line");
}

ErrorCode makeEvent() {
  ErrorCode error = kSuccess;
  NamedEvent::create("event", true, false, kEveryone, error);
  return error;
}

ErrorCode makeKey() {
  registry::Key key;
  return registry::make("Key", key);
}

TEST(PlantedFiles, MakeNobodyWriteElsewhere) {
  const fs::path elsewhere = stateDirectory() / "elsewhere";
  const fs::path victim = elsewhere / "victim";
  fs::create_directory(elsewhere);
  fs::create_directory(stateDirectory() / "objects");
  std::ofstream(victim) << "precious";

  const auto link = [&](const fs::path& planted) { fs::create_symlink(victim, planted); };
  const auto dangling = [&](const fs::path& planted) { fs::create_symlink(elsewhere / "new", planted); };
  const auto directory = [&](const fs::path& planted) { fs::create_directory_symlink(elsewhere, planted); };
  const auto secondName = [&](const fs::path& planted) { fs::create_hard_link(victim, planted); };
  const auto pipe = [](const fs::path& planted) { ASSERT_EQ(mkfifo(planted.c_str(), 0666), 0); };
  const auto log = [] { return append("c:\\log"); };
  const auto logBelow = [] { return append("c:\\logs\\victim"); };
  const struct {
    const char* name;
    std::function<void(const fs::path&)> plant;
    std::function<ErrorCode()> use;
    ErrorCode expected;
  } cases[] = {
      {"log", link, log, kAccessDenied},
      {"log", dangling, log, kAccessDenied},
      {"log", secondName, log, kAccessDenied},
      {"log", pipe, log, kAccessDenied},
      {"logs", directory, logBelow, kPathNotFound},
      {"logs", directory, [] { return deleteFile("c:\\logs\\victim"); }, kPathNotFound},
      {"objects/event", link, makeEvent, kAccessDenied},
      {"objects/event", pipe, makeEvent, kAccessDenied},
      {"objects", directory, makeEvent, kPathNotFound},
      {"registry.mdb", link, makeKey, kAccessDenied},
      {"registry.mdb-lock", link, makeKey, kAccessDenied},
      {"registry.mdb-lock", secondName, makeKey, kAccessDenied},
      {"registry.mdb-lock", dangling, makeKey, kAccessDenied},
      {"registry.mdb-lock", pipe, makeKey, kAccessDenied},
  };
  int i = 0;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name + std::string(" ") + std::to_string(i++));
    const fs::path planted = stateDirectory() / c.name;
    fs::remove_all(planted);
    c.plant(planted);
    EXPECT_EQ(c.use(), c.expected);
    EXPECT_EQ(test::contentOf(victim), "precious");
    EXPECT_EQ(std::distance(fs::directory_iterator(elsewhere), {}), 1);
    fs::remove(planted);
  }
  EXPECT_EQ(makeKey(), kSuccess);
}

TEST(PlantedFiles, AreRootsWhenRootUsesThem) {
  if (geteuid() != 0) return;
  constexpr uid_t kOther = 12345;
  ASSERT_EQ(chmod(stateDirectory().c_str(), 01777), 0);
  std::ofstream(stateDirectory() / "registry.mdb-lock").close();
  ASSERT_EQ(chown((stateDirectory() / "registry.mdb-lock").c_str(), kOther, 0), 0);
  EXPECT_EQ(makeKey(), kSuccess);
  struct stat status {};
  ASSERT_EQ(stat((stateDirectory() / "registry.mdb-lock").c_str(), &status), 0);
  EXPECT_EQ(status.st_uid, 0U);
}

}  // namespace
}  // namespace qvn::platform
