// Does nothing: loads what it is linked with, tells so, waits for the go and ends.
#include "startup/progress.h"

int main() {
  if (!qvn::bench::tell()) return 1;
  qvn::bench::waitForGo();
  return 0;
}
