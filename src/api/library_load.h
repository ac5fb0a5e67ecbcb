// The library's own module, known from the moment it is loaded into a process.
#pragma once

namespace qvn {

// An address inside the module.
const void* moduleHandle();

}  // namespace qvn
