// Tells a sound store from a damaged one. LMDB trusts the pages of its file: a damaged one could make it read
// outside of its memory or reuse pages that hold data. Its own interface does not tell which pages it would
// read or take for free, so neither a walk through it nor checksums of what is stored would find that out.
#pragma once

#include <string>

struct MDB_env;

namespace qvn::platform::registry {

// What is wrong with the first pages of a file, which opening it as a store depends on; empty when nothing
// is. `descriptor` is open for reading.
std::string findDamageInHead(int descriptor);

// What is wrong with the pages that the newest state of an open store consists of; empty when nothing is.
// Other processes may write meanwhile.
std::string findDamageInPages(MDB_env* environment);

}  // namespace qvn::platform::registry
