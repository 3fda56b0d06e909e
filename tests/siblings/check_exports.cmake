# Fails unless LIBRARY exports exactly the symbols EXPECTED (a list), by the tool NM.
execute_process(
  COMMAND ${NM} --dynamic --defined-only --format=posix ${LIBRARY}
  OUTPUT_VARIABLE output
  COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE "\n" ";" lines "${output}")
set(exported "")
foreach(line IN LISTS lines)
  if(line MATCHES "^([^ ]+) ")
    list(APPEND exported ${CMAKE_MATCH_1})
  endif()
endforeach()
list(SORT exported)
list(SORT EXPECTED)
if(NOT exported STREQUAL EXPECTED)
  message(FATAL_ERROR "exported: ${exported}\nexpected: ${EXPECTED}")
endif()
