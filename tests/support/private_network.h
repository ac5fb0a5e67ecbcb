// A network of a test's own, for programs that insist on ports and files of theirs.
#pragma once

#include <string>

namespace qvn::test {

// Moves this process, and those it starts from now on, into a network where loopback is all there is, with an
// empty /run that nobody else sees. Empty, or why the machine does not let it: only root may.
std::string enterPrivateNetwork();

}  // namespace qvn::test
