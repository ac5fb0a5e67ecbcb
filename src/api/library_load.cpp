#include "api/library_load.h"

namespace qvn {
namespace {

// Where a module lies does not change while it is loaded, so its handle is the address of its own data.
const char moduleAnchor = 0;

}  // namespace

const void* moduleHandle() { return &moduleAnchor; }

}  // namespace qvn
