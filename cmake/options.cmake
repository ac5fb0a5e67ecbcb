# Flags that every target of this tree is built with. Link qvn_options privately.
add_library(qvn_options INTERFACE)
target_compile_options(qvn_options INTERFACE
  -Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wcast-qual -Wimplicit-fallthrough
  $<$<COMPILE_LANGUAGE:CXX>:-Wsign-conversion>
  $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>
  $<$<COMPILE_LANGUAGE:CXX>:-Woverloaded-virtual>)

if(QVN_SANITIZE)
  add_compile_options(-fsanitize=${QVN_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${QVN_SANITIZE})
  # Library and plug-ins know each other's classes by their vtables only; this check wants the type
  # information too, which each module keeps to itself.
  if(QVN_SANITIZE MATCHES undefined)
    add_compile_options(-fno-sanitize=vptr)
  endif()
endif()

# A fuzzer finds its way by the branches that the code under it takes.
if(QVN_BUILD_FUZZERS)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# Undefined symbols in a shared object are found when it is linked, not when a client loads it.
# Sanitizer builds leave their runtime's symbols to the executable.
if(NOT QVN_SANITIZE)
  add_link_options($<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,SHARED_LIBRARY>:-Wl,-z,defs>
                   $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,MODULE_LIBRARY>:-Wl,-z,defs>)
endif()

# g++ 12 sees overlapping copies in std::string that are not there (GCC bug 105329), and at -O3 overlong reads
# where vectors of bytes are compared.
target_compile_options(qvn_options INTERFACE
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
  $<$<CXX_COMPILER_ID:GNU>:-Wno-stringop-overread>)
