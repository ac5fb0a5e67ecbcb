// What a verb that changed something says, and the flag that keeps it silent.
#pragma once

#include <iostream>
#include <string_view>

#include "verbs/verb.h"

namespace qvn::cli {

// The flag; it fills `quiet`, which lives as long as the verb's callback.
inline void addQuiet(Verb& verb, bool& quiet) {
  verb.addFlag("-q,--quiet", quiet, "Say nothing when it has worked");
}

// One line on standard output of what has been done, for the person who asked for it.
inline void say(bool quiet, std::string_view sentence) {
  if (!quiet) {
    std::cout << sentence << '\n';
  }
}

// What to do next after an empty list; on standard error, since the list itself is for programs.
inline void hint(std::string_view sentence) { std::cerr << "qvn: " << sentence << '\n'; }

}  // namespace qvn::cli
