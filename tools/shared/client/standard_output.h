// Standard output for what a tool has to say alone. The library writes a line to descriptor 1 when it meets
// an attribute of a type that it does not know, which must not get into a picture or a JSON document.
#pragma once

namespace qvn::cli {

// From here on std::cout writes to a descriptor of its own, and descriptor 1 is standard error. Once, before
// anything else.
void keepStandardOutput();

// The descriptor of the real standard output.
int standardOutput();

}  // namespace qvn::cli
