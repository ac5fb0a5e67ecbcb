// Runs a suite in a state directory of its own, made before anything looks for one and removed afterwards.
#include <gmock/gmock.h>
#include <stdlib.h>

#include <filesystem>
#include <iostream>

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  std::string home = (std::filesystem::temp_directory_path() / "qvn-test-XXXXXX").string();
  if (mkdtemp(home.data()) == nullptr) {
    std::cerr << "cannot make a state directory for the tests\n";
    return 1;
  }
  setenv("QVN_HOME", home.c_str(), 1);
  // Whatever the machine's own network announces is no part of a test.
  setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:path=" + home + "/no-bus").c_str(), 0);
  const int result = RUN_ALL_TESTS();
  std::error_code ignored;
  std::filesystem::remove_all(home, ignored);
  return result;
}
