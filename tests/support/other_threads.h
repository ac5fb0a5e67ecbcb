// What the threads of the test's process do while the test looks.
#pragma once

namespace qvn::test {

// Whether a thread of this process other than the caller runs or waits for a processor or a disk.
bool othersCompute();

// Returns when every other thread of this process waits for something that does not come by itself. Whoever
// was let go by then has gone as far as it gets: what has not happened now is being waited for.
void waitForOthersToRest();

}  // namespace qvn::test
