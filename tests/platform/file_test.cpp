// Files that several processes append to.
#include "platform/files/file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "platform/files/paths.h"
#include "support/process/forked.h"

namespace qvn::platform {
namespace {

namespace fs = std::filesystem;

constexpr const char* kPath = "c:\\test.log";
constexpr Access kEveryone{.everyone = true};

std::unique_ptr<File> open(File::Open how, ErrorCode expected, Access access = kEveryone,
                           const char* path = kPath) {
  ErrorCode error = kInvalidHandle;
  auto file = File::open(path, how, access, error);
  EXPECT_EQ(error, expected) << path;
  EXPECT_EQ(file != nullptr, expected == kSuccess) << path;
  return file;
}

std::string content() {
  std::ostringstream text;
  text << std::ifstream(nativePath(kPath)).rdbuf();
  return text.str();
}

TEST(File, IsMadeOnlyWhenAskedTo) {
  open(File::Open::Existing, kFileNotFound);
  EXPECT_FALSE(fs::exists(nativePath(kPath)));
  EXPECT_EQ(deleteFile(kPath), kFileNotFound);
  open(File::Open::CreateIfMissing, kSuccess);
  EXPECT_EQ(deleteFile(kPath), kSuccess);
  EXPECT_FALSE(fs::exists(nativePath(kPath)));
  open(File::Open::CreateIfMissing, kFileNotFound, kEveryone, "c:\\no\\such\\directory\\x");
  open(File::Open::Existing, kAccessDenied, kEveryone, "c:\\");
  open(File::Open::CreateIfMissing, kNameTooLong, kEveryone, ("c:\\" + std::string(300, 'x')).c_str());
}

TEST(File, IsOpenToWhomItsMakerSays) {
  umask(077);
  const auto mode = [](const char* path) {
    struct stat status {};
    return stat(nativePath(path).c_str(), &status) == 0 ? status.st_mode & 0777 : 0U;
  };
  open(File::Open::CreateIfMissing, kSuccess, kEveryone, "c:\\everyone");
  open(File::Open::CreateIfMissing, kSuccess, Access{}, "c:\\own");
  open(File::Open::CreateIfMissing, kSuccess, kEveryone, "c:\\own");
  EXPECT_EQ(mode("c:\\everyone"), 0666U);
  EXPECT_EQ(mode("c:\\own"), 0600U);
}

TEST(File, ALimitOnItsSizeIsAFullDisk) {
  test::Forked limited([] {
    const rlimit limit{.rlim_cur = 100, .rlim_max = 100};
    if (setrlimit(RLIMIT_FSIZE, &limit) != 0) return 1;
    const auto file = open(File::Open::CreateIfMissing, kSuccess);
    if (file->write(std::string(90, 'x')) != kSuccess) return 2;
    if (file->write(std::string(20, 'y')) != kDiskFull || lastError() != kDiskFull) return 3;
    // Nothing of what did not fit as a whole stays, and what fits goes where it would have gone.
    if (file->write(std::string(10, 'z')) != kSuccess) return 4;
    return 0;
  });
  EXPECT_EQ(limited.wait(), 0);
  EXPECT_EQ(content(), std::string(90, 'x') + std::string(10, 'z'));
}

}  // namespace
}  // namespace qvn::platform
