// Runs a suite in a state directory of its own, made before anything looks for one and removed afterwards.
// Each test begins with that directory empty and with the environment that the suite began with.
#include <gmock/gmock.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "platform/files/paths.h"
#include "platform/registry/registry.h"

namespace {

namespace fs = std::filesystem;
namespace registry = qvn::platform::registry;

void emptyKey(const registry::Key& key) {
  std::vector<std::string> names;
  registry::listSubkeys(key, 10'000, names);
  for (const std::string& name : names) {
    registry::Key subkey;
    if (registry::openSubkey(key, name, subkey) == qvn::platform::kSuccess) emptyKey(subkey);
    registry::deleteKey(key, name);
  }
}

class NothingIsLeftBehind : public testing::EmptyTestEventListener {
 public:
  NothingIsLeftBehind() : mask_(umask(0)) {
    umask(mask_);
    for (char** variable = environ; *variable != nullptr; ++variable) environment_.emplace_back(*variable);
  }

  void OnTestEnd(const testing::TestInfo&) override {
    clearenv();
    for (std::string& variable : environment_) putenv(variable.data());
    umask(mask_);
    std::error_code ignored;
    const fs::path home = getenv("QVN_HOME");
    for (const auto& entry : fs::directory_iterator(home, ignored)) {
      const std::string name = entry.path().filename().string();
      // The registry stays open as long as the process lives.
      if (!name.starts_with("registry.mdb")) fs::remove_all(entry.path(), ignored);
    }
    if (!fs::exists(home / "registry.mdb", ignored)) return;
    registry::transaction([] {
      registry::Key root;
      const qvn::platform::ErrorCode error = registry::openKey(registry::Hive::LocalMachine, "", root);
      if (error == qvn::platform::kSuccess) emptyKey(root);
      return error;
    });
  }

 private:
  const mode_t mask_;
  std::vector<std::string> environment_;
};

const pid_t parent = getpid();

}  // namespace

// In a child made by fork what its parent's other threads held looks lost.
extern "C" int __lsan_is_turned_off() { return getpid() != parent ? 1 : 0; }

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  std::string home = (fs::temp_directory_path() / "qvn-test-XXXXXX").string();
  if (mkdtemp(home.data()) == nullptr) {
    std::cerr << "cannot make a state directory for the tests\n";
    return 1;
  }
  setenv("QVN_HOME", home.c_str(), 1);
  // Whatever the machine's own network announces is no part of a test.
  setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:path=" + home + "/no-bus").c_str(), 0);
  testing::UnitTest::GetInstance()->listeners().Append(new NothingIsLeftBehind);
  const int result = RUN_ALL_TESTS();
  std::error_code ignored;
  fs::remove_all(home, ignored);
  return result;
}
