// The state directory and the paths that are mapped into it.
#include "platform/files/paths.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/process/forked.h"

namespace qvn::platform {
namespace {

namespace fs = std::filesystem;

TEST(Paths, EveryPathLiesBelowTheStateDirectory) {
  const struct {
    std::string path;
    const char* below;
  } cases[] = {
      {"c:\\qr__.log", "qr__.log"},
      {"C:\\Windows\\System32\\x.loc", "Windows/System32/x.loc"},
      {"d:\\x", "x"},
      {"c:x", "x"},
      {"x\\y", "x/y"},
      {"\\x\\\\y\\", "x/y"},
      {"c:/x/y", "x/y"},
      {"\\\\server\\share\\x", "server/share/x"},
      {"c:\\..\\..\\etc\\passwd", "etc/passwd"},
      {"..\\x", "x"},
      {"/etc/passwd", "etc/passwd"},
      {"c:\\.\\x\\..", "x"},
      {"c:..\\x", "x"},
      {std::string("a\0b", 3), "a_b"},
      {"c:\\", ""},
      {"", ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(nativePath(c.path).lexically_relative(stateDirectory()),
              *c.below == '\0' ? fs::path(".") : fs::path(c.below))
        << c.path;
  }
}

TEST(Paths, TheSystemsDirectoriesExist) {
  std::string windows;
  std::string system;
  EXPECT_EQ(windowsDirectory(windows), kSuccess);
  EXPECT_EQ(systemDirectory(system), kSuccess);
  EXPECT_EQ(windows, "c:\\windows");
  EXPECT_EQ(system, "c:\\windows\\system32");
  EXPECT_TRUE(fs::is_directory(nativePath(windows)));
  EXPECT_TRUE(fs::is_directory(nativePath(system)));
}

TEST(Paths, TheStateDirectoryIsChosenAndMadeForWhoAsks) {
  std::string base = (fs::temp_directory_path() / "qvn-paths-XXXXXX").string();
  ASSERT_NE(mkdtemp(base.data()), nullptr);
  ASSERT_EQ(chmod(base.c_str(), 0777), 0);
  const fs::path kept = base + "/kept";
  fs::create_directory(kept);
  ASSERT_EQ(chmod(kept.c_str(), 0711), 0);

  // Of root's, shared before the group's accounts were kept from each other's files.
  const fs::path shared = base + "/shared";
  fs::create_directory(shared);
  ASSERT_EQ(chmod(shared.c_str(), 02770), 0);
  fs::create_directory_symlink(kept, base + "/link");

  const bool isRoot = geteuid() == 0;
  const mode_t own = isRoot ? 03770 : 0700;
  const struct {
    const char* as;
    std::string home;  // empty: unset
    std::string state;
    std::string expected;
    mode_t mode;
  } cases[] = {
      {"self", base + "/x/y/", "", base + "/x/y", own},
      {"user", base + "/user", "/no", base + "/user", 0700},
      {"user", "", base + "/state", base + "/state/qvn", 0700},
      {"user", kept, "", kept, 0711},
      {"user", base + "/link", "", kept, 0711},
      {"self", shared, "", shared, isRoot ? mode_t{03770} : mode_t{02770}},
      {"user", "", "", "", 0},
      {"self", "/proc/no/such", "", "", 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.home + " " + c.state);
    test::Forked asker([&] {
      setenv("QVN_HOME", c.home.c_str(), 1);
      setenv("XDG_STATE_HOME", c.state.c_str(), 1);
      setenv("HOME", "/nonexistent", 1);
      return execl(STATE_DIRECTORY_PROGRAM, STATE_DIRECTORY_PROGRAM, c.as, c.expected.c_str(), nullptr);
    });
    EXPECT_EQ(asker.wait(), 0);
    if (c.expected.empty()) continue;
    struct stat status {};
    EXPECT_EQ(stat(c.expected.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, c.mode);
  }
  fs::remove_all(base);
}

}  // namespace
}  // namespace qvn::platform
