# Compares the functions that the header declares and those that the module exports with the list of expected
# ones. Needs EXPECTED, HEADER, MODULE and NM.
cmake_minimum_required(VERSION 3.25)

file(STRINGS ${EXPECTED} expected)

file(STRINGS ${HEADER} lines REGEX "^QVN_EXPORT ")
set(declared)
foreach(line IN LISTS lines)
  string(REGEX MATCH "Qvn[A-Za-z]+" name "${line}")
  list(APPEND declared ${name})
endforeach()

execute_process(COMMAND ${NM} --dynamic --defined-only --format=posix ${MODULE}
  OUTPUT_VARIABLE table COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]+" rows "${table}")
set(exported)
foreach(row IN LISTS rows)
  string(REGEX MATCH "^[^ ]+" name "${row}")
  list(APPEND exported ${name})
endforeach()

function(compare what)
  foreach(name IN LISTS expected)
    if(NOT name IN_LIST ${what})
      message(SEND_ERROR "${name} is not ${what}")
    endif()
  endforeach()
  foreach(name IN LISTS ${what})
    if(NOT name IN_LIST expected)
      message(SEND_ERROR "${name} is ${what} but not expected")
    endif()
  endforeach()
endfunction()
compare(declared)
compare(exported)

list(LENGTH expected count)
list(LENGTH declared declarations)
if(NOT count EQUAL 70 OR NOT declarations EQUAL count)
  message(SEND_ERROR "${count} functions are expected and ${declarations} declared, not 70")
endif()
