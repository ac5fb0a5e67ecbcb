// The state directory and the paths that are mapped into it.
#include "platform/files/paths.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/forked.h"

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

// What a process with these variables takes for its state directory; as a user without privileges when
// `asUser`.
int checkStateDirectory(const char* home, const char* state, bool asUser, const fs::path& expected,
                        mode_t mode) {
  test::Forked child([&] {
    constexpr uid_t kUser = 65534;
    if (asUser && geteuid() == 0 && (setgid(kUser) != 0 || setuid(kUser) != 0)) return 1;
    umask(asUser ? 0 : 077);
    home != nullptr ? setenv("QVN_HOME", home, 1) : unsetenv("QVN_HOME");
    state != nullptr ? setenv("XDG_STATE_HOME", state, 1) : unsetenv("XDG_STATE_HOME");
    setenv("HOME", "/nonexistent", 1);
    if (stateDirectory() != expected) return 2;
    if (expected.empty()) return lastError() == kSuccess ? 3 : 0;
    struct stat status {};
    if (stat(expected.c_str(), &status) != 0 || (status.st_mode & 07777) != mode) return 4;
    setenv("QVN_HOME", "/elsewhere", 1);
    return stateDirectory() == expected ? 0 : 5;
  });
  return child.wait();
}

TEST(Paths, TheStateDirectoryIsChosenAndMadeForWhoAsks) {
  std::string base = (fs::temp_directory_path() / "qvn-paths-XXXXXX").string();
  ASSERT_NE(mkdtemp(base.data()), nullptr);
  ASSERT_EQ(chmod(base.c_str(), 0777), 0);
  const std::string below = base + "/x/y";
  const std::string file = base + "/file/z";
  fs::create_directory(base + "/kept");
  ASSERT_EQ(chmod((base + "/kept").c_str(), 0711), 0);

  const mode_t own = geteuid() == 0 ? 02770 : 0700;
  EXPECT_EQ(checkStateDirectory((below + "/").c_str(), nullptr, false, below, own), 0);
  EXPECT_EQ(checkStateDirectory((base + "/user").c_str(), "/no", true, base + "/user", 0700), 0);
  EXPECT_EQ(checkStateDirectory(nullptr, (base + "/state").c_str(), true, base + "/state/qvn", 0700), 0);
  EXPECT_EQ(checkStateDirectory("", (base + "/state").c_str(), true, base + "/state/qvn", 0700), 0);
  EXPECT_EQ(checkStateDirectory((base + "/kept").c_str(), nullptr, true, base + "/kept", 0711), 0);
  EXPECT_EQ(checkStateDirectory(nullptr, nullptr, true, "", 0), 0) << "nowhere to go";
  EXPECT_EQ(checkStateDirectory("/proc/no/such", nullptr, false, "", 0), 0);
  fs::remove_all(base);
}

}  // namespace
}  // namespace qvn::platform
