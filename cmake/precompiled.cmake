# The standard headers that most files include, parsed once for all targets that are compiled with the same flags. Each
# file still includes what it uses: every preset but dev builds without precompiled headers and proves it.
set(qvn_standard_headers
  <algorithm> <array> <atomic> <cstddef> <cstdint> <cstring> <functional> <map> <memory> <mutex> <optional> <span>
  <string> <string_view> <utility> <vector>)

# What ccache needs to see through a precompiled header.
if(NOT CMAKE_DISABLE_PRECOMPILE_HEADERS)
  add_compile_options($<$<COMPILE_LANG_AND_ID:CXX,GNU>:-fpch-preprocess>)
endif()
