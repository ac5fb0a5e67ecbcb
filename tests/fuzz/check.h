// What must hold for any input: a fuzzer that finds it broken stops there.
#pragma once

#include <cstdio>
#include <cstdlib>

#define QVN_FUZZ_CHECK(condition)                                                         \
  do {                                                                                    \
    if (!(condition)) {                                                                   \
      std::fprintf(stderr, "%s:%d: does not hold: %s\n", __FILE__, __LINE__, #condition); \
      std::abort();                                                                       \
    }                                                                                     \
  } while (false)
