// state_directory_program self|user EXPECTED: whether a process that starts takes EXPECTED for its state
// directory, and keeps to it; empty means none, with an error.
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string_view>

#include "platform/files/paths.h"

using namespace qvn::platform;

int main(int argc, char** argv) {
  constexpr uid_t kUser = 65534;
  if (argc != 3) return 1;
  const bool asUser = std::string_view(argv[1]) == "user";
  const std::string_view expected = argv[2];
  // Another mask than the mode that is due.
  umask(asUser ? 0 : 077);
  if (asUser && geteuid() == 0 && (setgid(kUser) != 0 || setuid(kUser) != 0)) return 2;
  if (stateDirectory() != expected) return 3;
  if (expected.empty()) return lastError() == kSuccess ? 4 : 0;
  setenv("QVN_HOME", "/elsewhere", 1);
  return stateDirectory() == expected ? 0 : 5;
}
