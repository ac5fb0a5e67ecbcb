#include "shared/client/standard_output.h"

#include <fcntl.h>
#include <unistd.h>
#include <ext/stdio_filebuf.h>

#include <iostream>

namespace qvn::cli {

namespace {

int realOutput = STDOUT_FILENO;

}  // namespace

void keepStandardOutput() {
  // Whoever closed one of the two has nothing mixed up.
  const int kept = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  if (kept < 0 || fcntl(STDERR_FILENO, F_GETFD) < 0) return;
  realOutput = kept;
  // Flushed as std::cout is, and never destroyed, as std::cout is not.
  static auto* const buffer = new __gnu_cxx::stdio_filebuf<char>(kept, std::ios::out);
  std::cout.rdbuf(buffer);
  dup2(STDERR_FILENO, STDOUT_FILENO);
}

int standardOutput() { return realOutput; }

}  // namespace qvn::cli
