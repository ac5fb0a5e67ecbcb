// Finding, trusting and loading modules.
#include "platform/process/module.h"

#include <gmock/gmock.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "platform/files/paths.h"

namespace qvn::platform {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr mode_t kSafeDirectory = 0755;
constexpr mode_t kSafeFile = 0644;

// A directory with a copy of the test module in it.
fs::path install(const std::string& directory, const std::string& file = "module.so",
                 mode_t fileMode = kSafeFile, mode_t directoryMode = kSafeDirectory) {
  const fs::path path = stateDirectory() / directory;
  fs::create_directories(path);
  fs::copy_file(TEST_MODULE, path / file, fs::copy_options::overwrite_existing);
  chmod((path / file).c_str(), fileMode);
  chmod(path.c_str(), directoryMode);
  return path;
}

std::unique_ptr<Module> load(const std::string& name, ErrorCode expected) {
  ErrorCode error = kInvalidHandle;
  std::string detail;
  auto module = Module::load(name, error, &detail);
  EXPECT_EQ(error, expected) << name << ": " << detail;
  EXPECT_EQ(module != nullptr, expected == kSuccess) << name;
  if (expected == kSuccess) {
    EXPECT_THAT(detail, IsEmpty());
  } else {
    EXPECT_THAT(detail, testing::Not(IsEmpty())) << name;
    EXPECT_EQ(lastError(), expected) << name;
  }
  return module;
}

std::string pathOf(const Module& module) {
  ErrorCode error = kSuccess;
  return modulePath(module.find("answer", error));
}

TEST(Module, ABareNameIsSearchedInTheTransportPathInOrder) {
  const fs::path second = install("second", "both.so");
  const fs::path first = install("first", "both.so");
  install("second", "only-second.so");
  setenv("QVN_TRANSPORT_PATH", (":" + first.string() + "::/no/such/directory:" + second.string()).c_str(), 1);
  const auto both = load("both.so", kSuccess);
  const auto only = load("only-second.so", kSuccess);
  ASSERT_TRUE(both != nullptr && only != nullptr);
  EXPECT_EQ(pathOf(*both), first / "both.so");
  EXPECT_EQ(pathOf(*only), second / "only-second.so");
  load("neither.so", kModuleNotFound);
}

TEST(Module, TheSystemIsSearchedLast) {
  const auto system = load("libm.so.6", kSuccess);
  ASSERT_NE(system, nullptr);
  ErrorCode error = kInvalidHandle;
  EXPECT_NE(system->find("cos", error), nullptr);
  EXPECT_EQ(error, kSuccess);
}

TEST(Module, ItsFunctionsAreFoundByName) {
  const auto module = load((install("functions") / "module.so").string(), kSuccess);
  ASSERT_NE(module, nullptr);
  ErrorCode error = kInvalidHandle;
  const auto answer = reinterpret_cast<int (*)()>(module->find("answer", error));
  ASSERT_NE(answer, nullptr);
  EXPECT_EQ(answer(), 42);
  EXPECT_EQ(module->find("question", error), nullptr);
  EXPECT_EQ(error, kProcedureNotFound);
  EXPECT_EQ(module->find(nullptr, error), nullptr);
}

TEST(Module, OneFileIsOneModule) {
  const fs::path directory = install("identity");
  fs::create_symlink(directory / "module.so", directory / "link.so");
  install("other");
  const auto first = load((directory / "module.so").string(), kSuccess);
  const auto again = load((directory / "link.so").string(), kSuccess);
  const auto other = load((stateDirectory() / "other" / "module.so").string(), kSuccess);
  ASSERT_TRUE(first != nullptr && again != nullptr && other != nullptr);
  EXPECT_EQ(first->identity(), again->identity());
  EXPECT_NE(first->identity(), other->identity());
}

TEST(Module, WhatOthersCouldChangeIsNotLoaded) {
  const fs::path safe = install("safe");
  const struct {
    const char* name;
    fs::path path;
    const char* detail;
  } cases[] = {
      {"group may write the file", install("file-group", "module.so", 0664) / "module.so",
       "module.so can be written"},
      {"all may write the file", install("file-all", "module.so", 0646) / "module.so",
       "module.so can be written"},
      {"group may write the directory", install("dir-group", "module.so", kSafeFile, 0775) / "module.so",
       "dir-group can be written"},
      {"all may write the directory, sticky", install("dir-all", "module.so", kSafeFile, 01777) / "module.so",
       "dir-all can be written"},
      {"a link into such a directory", safe / "link.so", "dir-all can be written"},
  };
  fs::create_symlink(stateDirectory() / "dir-all" / "module.so", safe / "link.so");
  for (const auto& c : cases) {
    ErrorCode error = kSuccess;
    std::string detail;
    EXPECT_EQ(Module::load(c.path.string(), error, &detail), nullptr) << c.name;
    EXPECT_EQ(error, kAccessDenied) << c.name;
    EXPECT_THAT(detail, HasSubstr(c.detail)) << c.name;
  }
  setenv("QVN_TRANSPORT_PATH", (stateDirectory() / "file-group").c_str(), 1);
  load("module.so", kAccessDenied);
}

TEST(Module, WhatIsNoModuleIsNotLoaded) {
  const fs::path directory = install("broken");
  std::ofstream(directory / "text.so") << "not a module";
  std::ofstream(directory / "empty.so");
  fs::resize_file(install("broken", "cut.so") / "cut.so", 2000);
  for (const char* const name : {"text.so", "empty.so", "cut.so"})
    load((directory / name).string(), kBadExecutableFormat);
  for (const fs::path& name :
       {directory / "missing.so", directory / "module.so" / "below-a-file", fs::path()})
    load(name.string(), kModuleNotFound);
  load(std::string("module\0.so", 10), kModuleNotFound);
}

TEST(Module, PathOfCodeAndOfNothing) {
  EXPECT_EQ(modulePath(reinterpret_cast<const void*>(&pathOf)), fs::read_symlink("/proc/self/exe"));
  EXPECT_THAT(modulePath(reinterpret_cast<const void*>(&modulePath)), HasSubstr("/"));
  EXPECT_EQ(modulePath(nullptr), "");
}

}  // namespace
}  // namespace qvn::platform
